/// Strength and hue of the colour differences.
#ifndef DEIMG_STAGES_COLOUR_CHROMA_ADJUSTMENT_INL_H
#define DEIMG_STAGES_COLOUR_CHROMA_ADJUSTMENT_INL_H

#include "stages/colour/chroma_gain_curve.h"
#include "stages/segment_curve-inl.h"
#include "stages/stage_context.h"

namespace deimg::DEIMG_LEVEL {

/// The colour differences before the adjustment.
inline constexpr Range kDifferenceRange = {-4096, 4095};

/// Multiplies the colour differences by a gain over their strength, and adds a share of each to the
/// other one, by the other's sign.
template <typename T>
class ChromaAdjustment {
 public:
  explicit ChromaAdjustment(const DevelopmentTables& tables)
      : ofCr_(8 * tables.colourOffsets[2]),
        ofCb_(8 * tables.colourOffsets[3]),
        ofNegativeCr_(ofCr_ + 8 * tables.colourOffsets[0]),
        ofNegativeCb_(ofCb_ + 8 * tables.colourOffsets[1]) {
    std::array<Sample, kChromaGainTableSize> table{};
    const auto segments = BuildChromaGainTable(tables.colourGains, table.data());
    gainCurve_.Set(table, segments);
    strengthened_ = kDifferenceRange * gainCurve_.range() / kChromaGainOne;
  }

  Range CrRange() const { return AdjustedRange(ofCb_, ofNegativeCb_); }
  Range CbRange() const { return AdjustedRange(ofCr_, ofNegativeCr_); }
  /// Whether 16 bits suffice for the products below.
  bool isNarrow() const {
    const Range shares = Either(Either(Exactly(ofCr_), Exactly(ofNegativeCr_)),
                                Either(Exactly(ofCb_), Exactly(ofNegativeCb_)));
    return Contains({0, 1023}, gainCurve_.range()) && Contains({-16383, 16383}, strengthened_) &&
           Contains({-4095, 4095}, shares);
  }

  /// `level` and `gain` are lines to work in.
  void Apply(const T* crIn, const T* cbIn, int width, T* level, T* gain, T* cr, T* cb) const {
    ChromaLevelLine(crIn, cbIn, width, level);
    gainCurve_.GainLine(level, width, gain);
    AdjustLine(crIn, cbIn, gain, width, cr, cb);
  }

 private:
  Range AdjustedRange(Sample share, Sample shareOfNegative) const {
    const Range shares = Either(Exactly(share), Exactly(shareOfNegative));
    return strengthened_ + shares * strengthened_ / 1024;
  }

  /// Index of the chroma gain, 0 to 128.
  static void ChromaLevelLine(LineOf<T> cr, LineOf<T> cb, int width, MutableLineOf<T> level) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      Store(level + x, Max(Abs(Load<n>(cr + x)), Abs(Load<n>(cb + x))) >> 5);
    });
  }

  void AdjustLine(LineOf<T> crIn, LineOf<T> cbIn, LineOf<T> gain, int width, MutableLineOf<T> cr,
                  MutableLineOf<T> cb) const {
    const Sample ofCr = ofCr_, ofCb = ofCb_;
    const Sample ofNegativeCr = ofNegativeCr_, ofNegativeCb = ofNegativeCb_;
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      using L = Lanes<T, n>;
      const auto share = [](L v, Sample ofNegative, Sample of) {
        const auto all = [](Sample value) { return L::All(static_cast<T>(value)); };
        return ScaledBy<10, 4>(Select(v < all(0), all(-ofNegative), all(of)), Abs(v));
      };
      const L gains = Load<n>(gain + x);
      const L red = ScaledBy<7, 3>(Load<n>(crIn + x), gains);
      const L blue = ScaledBy<7, 3>(Load<n>(cbIn + x), gains);
      Store(cr + x, red + share(blue, ofNegativeCb, ofCb));
      Store(cb + x, blue + share(red, ofNegativeCr, ofCr));
    });
  }

  GainCurve<T, 4, kChromaGainTableSize> gainCurve_;
  Sample ofCr_, ofCb_;  // shares, in 1024ths
  Sample ofNegativeCr_, ofNegativeCb_;
  Range strengthened_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_CHROMA_ADJUSTMENT_INL_H

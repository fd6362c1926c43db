/// Less colour where the picture is very dark or very bright.
///
/// Scales both colour differences by a gain that the local brightness selects from a curve, and by
/// a fixed gain each.
///
/// Inputs: the matrix's colour differences; the low-passed luminance; red and blue of the planes.
/// Output: kFirstDifference and kSecondDifference, same scale; 0 in the first and the last column.
#ifndef DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_INL_H
#define DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_INL_H

#include "line/look_up.h"
#include "stages/colour/matrix4x3-inl.h"
#include "stages/colour/suppression_curve.h"
#include "stages/luma/hor_lpf_for_a_filter-inl.h"
#include "stages/segment_curve-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class ChromaSuppress final : public Stage {
 public:
  enum Port { kFirstDifference, kSecondDifference };

  ChromaSuppress(const StageContext& context, Matrix4x3<T>& matrix, HorLpfForAFilter<T>& luminance,
                 HokanVH<T>& planes)
      : Stage(InfoOf(TypeId::kChromaSuppress), context.size(), {&matrix, &luminance, &planes}, 3),
        plain_(context.settings.plainProcessing()),
        gainCr_(plain_ ? kChromaGainOne : context.tables.chromaGainCr),
        gainCb_(plain_ ? kChromaGainOne : context.tables.chromaGainCb),
        curveStatus_(MakeCurve(context.tuning.chromaSuppression[context.settings.isoClass])),
        crIn_(*this, matrix, Matrix4x3<T>::kFirstDifference),
        cbIn_(*this, matrix, Matrix4x3<T>::kSecondDifference),
        luminance_(*this, luminance, HorLpfForAFilter<T>::kLowPassed),
        red_(*this, planes, HokanVH<T>::kRed),
        blue_(*this, planes, HokanVH<T>::kBlue),
        cr_(*this, kFirstDifference, SuppressedRange(crIn_.range(), gainCr_)),
        cb_(*this, kSecondDifference, SuppressedRange(cbIn_.range(), gainCb_)) {
    for (const Range in : {crIn_.range(), cbIn_.range()}) this->template Needs<T>(Magnitude(in));
    this->template Needs<T>(red_.range() + red_.range());
    this->template Needs<T>(blue_.range() + blue_.range());
    for (const Sample gain : {gainCr_, gainCb_}) {
      this->template Needs<T>(gain * curve_.range());
      this->template NeedsNarrow<T>((gain * curve_.range()).low >= 0);
    }
  }

  /// 96 for a code of the curve that does not exist.
  [[nodiscard]] Result Prepare() override { return curveStatus_; }

 private:
  Result MakeCurve(const ChromaSuppression& parameters) {
    std::array<Sample, kSuppressionCurveSize> table{};
    SuppressionSegments segments;
    const Result result = BuildSuppressionCurve(parameters, table.data(), segments);
    curve_.Set(table, segments);
    return result;
  }

  Range SuppressedRange(Range in, Sample gain) const {
    return Either(in * (gain * curve_.range()) / kOne, Exactly(0));
  }

  void ComputeLine(int o) override {
    T* const level = Scratch<T>(0);
    T* const largest = Scratch<T>(1);
    T* const gain = Scratch<T>(2);
    LevelLine(red_[o], blue_[o], luminance_[o], width(), level);
    LargestLevelLine(level, width(), largest);
    curve_.GainLine(largest, width(), gain);
    SuppressLine(crIn_[o], gain, gainCr_, width(), cr_[o]);
    SuppressLine(cbIn_[o], gain, gainCb_, width(), cb_[o]);
  }

  /// Brightness levels from red, blue and the low-passed luminance; column 0 gets 0.
  static void LevelLine(LineOf<T> r, LineOf<T> b, Line luminance, int width,
                        MutableLineOf<T> level) {
    const int last = width - 1;
    ForColumns<T>(1, last, [=]<int n>(LaneCount<n>, Index x) {
      const auto beside = [&](LineOf<T> l) { return Load<n>(l + x - 1) + Load<n>(l + x + 1); };
      const auto sum = DotPairs(beside(r), 1, Load<n>(r + x), 2) +
                       DotPairs(beside(b), 2, Load<n>(b + x), 4) + LoadSums<n, T>(luminance + x);
      Store(level + x, Level(Narrowed(sum >> 8)));
    });
    level[0] = 0;
    // The last sample repeats.
    const Sample sum =
        r[last - 1] + 3 * r[last] + luminance[last] + 2 * (b[last - 1] + 3 * b[last]);
    level[last] = Level(Lanes<T, 1>{Nearest<T>(sum >> 8)}).v;
  }
  template <int n>
  DEIMG_INLINE static Lanes<T, n> Level(Lanes<T, n> brightness) {
    return Clamp(brightness, 32, kHighestLevel + 32) - Lanes<T, n>::All(32);
  }

  /// The largest level within three columns on either side; the two columns before the last keep
  /// their own level.
  static void LargestLevelLine(LineOf<T> level, int width, MutableLineOf<T> largest) {
    largest[0] = 0;
    // Levels are never negative, so columns before the line may simply be left out.
    largest[1] = Max(Max(level[1], level[2]), Max(level[3], level[4]));
    largest[2] = Max(largest[1], level[5]);
    ForColumns<T>(3, width - 3, [=]<int n>(LaneCount<n>, Index x) {
      const auto pair = [=](Index c) { return Max(Load<n>(level + c), Load<n>(level + c + 1)); };
      Store(largest + x,
            Max(Max(pair(x - 3), pair(x - 1)), Max(pair(x + 1), Load<n>(level + x + 3))));
    });
    for (Index x = width - 3; x < width; ++x) largest[x] = level[x];
  }

  /// Applies the curve's gains and a fixed one.
  static void SuppressLine(LineOf<T> in, LineOf<T> curve, Sample gain, int width,
                           MutableLineOf<T> out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto gains = Load<n>(curve + x) * static_cast<T>(gain);
      Store(out + x, ScaledBy<kOneBits, 1>(Load<n>(in + x), gains));
    });
    out[0] = out[width - 1] = 0;
  }

  static constexpr int kOneBits = 14;
  static constexpr Sample kOne = kChromaGainOne * kChromaGainOne;
  static_assert(kOne == 1 << kOneBits);

  const bool plain_;
  const Sample gainCr_;
  const Sample gainCb_;
  GainCurve<T, 5, kSuppressionCurveSize> curve_;
  const Result curveStatus_;
  const Input<T> crIn_;
  const Input<T> cbIn_;
  const Input<Sample> luminance_;
  const Input<T> red_;
  const Input<T> blue_;
  const Output<T> cr_;
  const Output<T> cb_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_INL_H

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

namespace deimg::DEIMG_LEVEL {

template <typename T>
class ChromaSuppress final : public Stage {
 public:
  enum Port { kFirstDifference, kSecondDifference };

  ChromaSuppress(const StageContext& context, Matrix4x3<T>& matrix, HorLpfForAFilter& luminance,
                 HokanVH<T>& planes)
      : Stage(InfoOf(TypeId::kChromaSuppress), context.size(), {&matrix, &luminance, &planes}, 3),
        parameters_(context.tuning.chromaSuppression[context.settings.isoClass]),
        plain_(context.settings.plainProcessing()),
        gainCr_(plain_ ? kChromaGainOne : context.tables.chromaGainCr),
        gainCb_(plain_ ? kChromaGainOne : context.tables.chromaGainCb),
        crIn_(*this, matrix, Matrix4x3<T>::kFirstDifference),
        cbIn_(*this, matrix, Matrix4x3<T>::kSecondDifference),
        luminance_(*this, luminance, HorLpfForAFilter::kLowPassed),
        red_(*this, planes, HokanVH<T>::kRed),
        blue_(*this, planes, HokanVH<T>::kBlue) {}

  /// 3 without memory for the curve, 96 for a code that does not exist.
  [[nodiscard]] Result Prepare() override {
    suppressTable_ = BlockOf<Sample>::Zeroed(kSuppressionCurveSize);
    if (!suppressTable_) return DEIMG_OUT_OF_MEMORY;
    return BuildSuppressionCurve(parameters_, suppressTable_.get());
  }

 private:
  void ComputeLine(int o) override {
    auto* const level = Scratch<NarrowSample>(0);
    auto* const largest = Scratch<NarrowSample>(1);
    Sample* const gain = Scratch(2);
    LevelLine(red_[o], blue_[o], luminance_[o], width(), level);
    LargestLevelLine(level, width(), largest);
    LookUpLine(suppressTable_.get(), largest, width(), gain);
    SuppressLine(crIn_[o], gain, gainCr_, width(), cr_[o]);
    SuppressLine(cbIn_[o], gain, gainCb_, width(), cb_[o]);
  }

  /// Brightness levels from red, blue and the low-passed luminance; column 0 gets 0.
  static void LevelLine(LineOf<T> r, LineOf<T> b, Line luminance, int width,
                        MutableLineOf<NarrowSample> level) {
    const auto at = [&](Index x, Sample rRight, Sample bRight) {
      const Sample sum =
          r[x - 1] + 2 * r[x] + rRight + luminance[x] + 2 * (b[x - 1] + 2 * b[x] + bRight);
      return static_cast<NarrowSample>(ClampedQuotient(sum, 8, 32, kHighestLevel + 32) - 32);
    };
    level[0] = 0;
    for (Index x = 1; x < width - 1; ++x) level[x] = at(x, r[x + 1], b[x + 1]);
    level[width - 1] = at(width - 1, r[width - 1], b[width - 1]);  // the last sample repeats
  }

  /// The largest level within three columns on either side; the two columns before the last keep
  /// their own level.
  static void LargestLevelLine(LineOf<NarrowSample> level, int width,
                               MutableLineOf<NarrowSample> largest) {
    largest[0] = 0;
    // Levels are never negative, so columns before the line may simply be left out.
    largest[1] = Max(Max(level[1], level[2]), Max(level[3], level[4]));
    largest[2] = Max(largest[1], level[5]);
    for (Index x = 3; x < width - 3; ++x) {
      largest[x] = Max(Max(Max(level[x - 3], level[x - 2]), Max(level[x - 1], level[x])),
                       Max(Max(level[x + 1], level[x + 2]), level[x + 3]));
    }
    for (Index x = width - 3; x < width; ++x) largest[x] = level[x];
  }

  /// Applies the curve's gains and a fixed one.
  static void SuppressLine(Line in, Line curve, Sample gain, int width, MutableLine out) {
    constexpr Sample kOne = kChromaGainOne * kChromaGainOne;
    for (Index x = 0; x < width; ++x) out[x] = in[x] * curve[x] * gain / kOne;
    out[0] = out[width - 1] = 0;
  }

  const ChromaSuppression& parameters_;
  const bool plain_;
  const Sample gainCr_;
  const Sample gainCb_;
  const Input<Sample> crIn_;
  const Input<Sample> cbIn_;
  const Input<Sample> luminance_;
  const Input<T> red_;
  const Input<T> blue_;
  const Output<Sample> cr_{*this, kFirstDifference};
  const Output<Sample> cb_{*this, kSecondDifference};
  BlockOf<Sample> suppressTable_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_INL_H

/// Detail, taken in the direction in which the picture changes less.
///
/// Subtracts the signal smoothed in both directions from the one smoothed vertically (where the
/// picture changes more along the line) or interpolated horizontally (elsewhere), and weights the
/// difference by a gain that grows with the size of the direction measure.
///
/// Inputs: the direction measure; the vertical low-pass (4 x the mosaic's scale); the one in both
/// directions (16 x); the interpolated greens (2 x). Output: kDetail, signed, 16 x.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_MAIN_INL_H
#define DEIMG_STAGES_LUMA_A_FILTER_MAIN_INL_H

#include "stages/colour/vh_diff-inl.h"
#include "stages/luma/a_filter_hokan_lpf-inl.h"
#include "stages/luma/hor_lpf_for_a_filter-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class AFilterMain final : public Stage {
 public:
  enum Port { kDetail };

  AFilterMain(const StageContext& context, VHDiff<T>& direction, VerLpfForAFilter<T>& vertical,
              HorLpfForAFilter& both, AFilterHokanLpf<T>& horizontal)
      : Stage(InfoOf(TypeId::kAFilterMain), context.size(),
              {&direction, &vertical, &both, &horizontal}),
        tuning_(context.filters()),
        direction_(*this, direction, VHDiff<T>::kMeasure),
        vertical_(*this, vertical, VerLpfForAFilter<T>::kLowPassed),
        both_(*this, both, HorLpfForAFilter::kLowPassed),
        horizontal_(*this, horizontal, AFilterHokanLpf<T>::kGreen) {}

  /// 96 for a slope that does not exist.
  [[nodiscard]] Result Prepare() override {
    constexpr int kSteepestShift = 8;
    if (tuning_.aFilterSlopeShift > kSteepestShift) return DEIMG_UNSUPPORTED;
    gain_.core = tuning_.aFilterCoreLevel;
    gain_.step = 256 >> tuning_.aFilterSlopeShift;
    const Sample rampEnd = (gain_.step * gain_.core / 8 + kFull) * 8 / gain_.step;
    gain_.full = Min(rampEnd, kLargestSize);
    return DEIMG_OK;
  }

 private:
  /// The gain by the size of the direction measure, in 32nds: 0 up to `core`, then a ramp of `step`
  /// eighths per unit, and full gain from `full` on.
  struct Gain {
    Sample core;
    Sample step;
    Sample full;
  };
  static constexpr Sample kFull = 32;
  static constexpr Sample kLargestSize = 256;  // counted as this, and always full gain

  void ComputeLine(int o) override {
    DetailLine(direction_[o], vertical_[o], both_[o], horizontal_[o], gain_, width(), detail_[o]);
  }

  static void DetailLine(LineOf<T> direction, Line vertical, Line both, LineOf<T> horizontal,
                         const Gain& gain, int width, MutableLine out) {
    const Sample core = gain.core, step = gain.step, full = gain.full;
    for (Index x = 0; x < width; ++x) {
      const Sample d = direction[x];
      const Sample size = Clamp(Abs(d), 0, kLargestSize);
      const Sample g = size < full ? (Max(size - core, 0) * step) >> 3 : kFull;
      const Sample smoothed = BySign(d, 4 * vertical[x], 8 * horizontal[x]);
      out[x] = (smoothed - both[x]) * g / kFull;
    }
  }

  const FilterTuning& tuning_;
  Gain gain_{};
  const Input<T> direction_;
  const Input<Sample> vertical_;
  const Input<Sample> both_;
  const Input<T> horizontal_;
  const Output<Sample> detail_{*this, kDetail};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_A_FILTER_MAIN_INL_H

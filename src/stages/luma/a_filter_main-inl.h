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
              HorLpfForAFilter<T>& both, AFilterHokanLpf<T>& horizontal)
      : Stage(InfoOf(TypeId::kAFilterMain), context.size(),
              {&direction, &vertical, &both, &horizontal}),
        tuning_(context.filters()),
        direction_(*this, direction, VHDiff<T>::kMeasure),
        vertical_(*this, vertical, VerLpfForAFilter<T>::kLowPassed),
        both_(*this, both, HorLpfForAFilter<T>::kLowPassed),
        horizontal_(*this, horizontal, AFilterHokanLpf<T>::kGreen),
        detail_(*this, kDetail, DetailRange()) {}

  /// 96 for a slope that does not exist.
  [[nodiscard]] Result Prepare() override {
    constexpr int kSteepestShift = 8;
    if (tuning_.aFilterSlopeShift > kSteepestShift) return DEIMG_UNSUPPORTED;
    gain_.core = Min<Sample>(tuning_.aFilterCoreLevel, kLargestSize);  // more is the same
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
  static constexpr int kFullBits = 5;
  static constexpr Sample kFull = 1 << kFullBits;
  static constexpr Sample kLargestSize = 256;  // counted as this, and always full gain

  Range DetailRange() const {
    const Range smoothed = Either(4 * vertical_.range(), 8 * horizontal_.range());
    const Range gain = {0, kFull};
    return (smoothed - both_.range()) * gain / kFull;
  }

  void ComputeLine(int o) override {
    DetailLine(direction_[o], vertical_[o], both_[o], horizontal_[o], gain_, width(), detail_[o]);
  }

  static void DetailLine(LineOf<T> direction, LineOf<T> vertical, Line both, LineOf<T> horizontal,
                         const Gain& gain, int width, MutableLine out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      using L = Lanes<T, n>;
      const auto all = [](Sample value) { return L::All(static_cast<T>(value)); };
      const L zero = all(0), d = Load<n>(direction + x);
      const L size = Clamp(Abs(d), 0, kLargestSize);
      const L ramp = (Max(size - all(gain.core), zero) * static_cast<T>(gain.step)) >> 3;
      const L g = Select(size < all(gain.full), ramp, all(kFull));
      const auto isAlong = d < zero;
      const auto smoothed = DotPairs(Select(isAlong, Load<n>(vertical + x), zero), 4,
                                     Select(isAlong, zero, Load<n>(horizontal + x)), 8);
      const auto difference = smoothed - LoadSums<n, T>(both + x);
      StoreSums(out + x, Quotient<kFullBits>(difference * Widened(g)));
    });
  }

  const FilterTuning& tuning_;
  Gain gain_{};
  const Input<T> direction_;
  const Input<T> vertical_;
  const Input<Sample> both_;
  const Input<T> horizontal_;
  const Output<Sample> detail_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_A_FILTER_MAIN_INL_H

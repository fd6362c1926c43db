/// Detail, taken in the direction in which the picture changes less.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_MAIN_H
#define DEIMG_STAGES_LUMA_A_FILTER_MAIN_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Subtracts the signal smoothed in both directions from the one smoothed vertically (where the
/// picture changes more along the line) or interpolated horizontally (elsewhere), and weights the
/// difference by a gain that grows with the size of the direction measure.
///
/// Inputs: VHDiff, VerLpf (4 x the mosaic's scale), HorLpf (16 x), A-Filter Hokan LPF (2 x).
/// Output: port 0, signed detail, 16 x.
template <typename T>
class AFilterMain final : public ComponentX {
 public:
  explicit AFilterMain(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

/// The gain: 0 below `coreLevel`, then a ramp of 256 >> `slopeShift` eighths per unit, then 32, and
/// always 32 from a direction measure of 256 on. `slopeShift` is 0 to 8.
[[nodiscard]] AFilterGain MakeAFilterGain(int slopeShift, int coreLevel);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_A_FILTER_MAIN_H

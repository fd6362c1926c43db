/// Red minus green and blue minus green at every sample.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_H
#define DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Interpolates the mosaic and takes from red and blue either the average green or the green that
/// the direction suggests, whichever leaves the smaller differences.
///
/// The differences are for the median alone: without it none are computed.
///
/// Inputs: VHDiff; White Balance, three lines. Output: port 0 red minus green, ports 1 and 2 the
/// green planes, port 3 blue minus green; four times the mosaic's scale.
template <typename T>
class HokanCircuit final : public ComponentX {
 public:
  explicit HokanCircuit(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_H

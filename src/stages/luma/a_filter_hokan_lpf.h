/// Horizontal interpolation of the green sites.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_H
#define DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Fills every line of the mosaic from its green sites: they are doubled, the sites between get the
/// sum of both neighbours.
///
/// Input: White Balance, one line. Output: port 0, twice the mosaic's scale.
template <typename T>
class AFilterHokanLpf final : public ComponentX {
 public:
  explicit AFilterHokanLpf(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_H

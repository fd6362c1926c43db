/// Horizontal aperture correction.
#ifndef DEIMG_STAGES_LUMA_H_APC_PROCS_H
#define DEIMG_STAGES_LUMA_H_APC_PROCS_H

#include "graph/component.h"
#include "graph/stage_context.h"
#include "stages/luma/apc_curve.h"

namespace deimg {

/// A narrow and a wide horizontal high-pass of the enhanced luminance, each through its curve.
/// Plain and quick processing skip the stage: its lines stay 0.
///
/// Input: Ramen to YMIX, port 1. Output: port 0 narrow, port 1 wide detail.
class HApcProcs final : public ComponentX {
 public:
  explicit HApcProcs(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_H_APC_PROCS_H

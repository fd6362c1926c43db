/// Aperture correction of the A-filter's detail.
#ifndef DEIMG_STAGES_LUMA_A_APC_PROCS_H
#define DEIMG_STAGES_LUMA_A_APC_PROCS_H

#include "graph/component.h"
#include "graph/stage_context.h"
#include "stages/luma/apc_curve.h"

namespace deimg {

/// Sends the detail of the A-filter through a curve. Plain and quick processing skip the stage.
///
/// Input: A-Filter, port 0. Output: port 0.
class AApcProcs final : public ComponentX {
 public:
  explicit AApcProcs(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_A_APC_PROCS_H

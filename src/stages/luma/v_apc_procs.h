/// Vertical aperture correction.
#ifndef DEIMG_STAGES_LUMA_V_APC_PROCS_H
#define DEIMG_STAGES_LUMA_V_APC_PROCS_H

#include <array>

#include "graph/component.h"
#include "graph/stage_context.h"
#include "stages/luma/apc_curve.h"

namespace deimg {

/// A vertical high-pass, smoothed along the line, through its curve. Plain and quick processing
/// skip the stage.
///
/// Input: A-Filter Hokan LPF, seven lines. Output: port 0.
template <typename T>
class VApcProcs final : public ComponentX {
 public:
  explicit VApcProcs(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_V_APC_PROCS_H

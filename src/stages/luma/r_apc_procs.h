/// Two-dimensional aperture correction.
#ifndef DEIMG_STAGES_LUMA_R_APC_PROCS_H
#define DEIMG_STAGES_LUMA_R_APC_PROCS_H

#include <array>

#include "graph/component.h"
#include "graph/stage_context.h"
#include "stages/luma/apc_curve.h"

namespace deimg {

/// Subtracts a weighted blend of two smoothed versions of the input from a lightly smoothed
/// reference; all three carry 16 times the input. The difference goes through its curve. Plain and
/// quick processing skip the stage.
///
/// Input: A-Filter Hokan LPF, seven lines. Output: port 0; ports 1 and 2 hold the smooth versions.
template <typename T>
class RApcProcs final : public ComponentX {
 public:
  explicit RApcProcs(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_R_APC_PROCS_H

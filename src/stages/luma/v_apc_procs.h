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
class VApcProcs final : public ComponentX {
 public:
  explicit VApcProcs(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
  ApcCurve curve_;
};

/// High-passes down the columns: (-1, 0, 2, 0, -1) / 2 and (1, -4, -1, 8, -1, -4, 1) / 8.
void VerticalHighPass3Line(Line u2, Line m, Line d2, int width, MutableLine out);
void VerticalHighPass7Line(Line u3, Line u2, Line u1, Line m, Line d1, Line d2, Line d3, int width,
                           MutableLine out);

/// (1, 4, 6, 4, 1) / 16 along the line; the two outer columns on each side are copied.
void SmoothDetailLine(Line in, int width, MutableLine out);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_V_APC_PROCS_H

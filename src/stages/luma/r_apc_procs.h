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
/// Input: A-Filter Hokan LPF, seven lines. Output: port 0; ports 1 and 2 hold intermediates.
class RApcProcs final : public ComponentX {
 public:
  explicit RApcProcs(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
  ApcCurve curve_;
};

/// The seven lines around the one computed, from three above to three below.
using SevenLines = std::array<const Sample*, 7>;

/// Vertical low-passes with a gain of 4: (1, 4, 6, 4, 1) / 4, and two of seven taps in sixteenths.
void VerticalSmooth5Line(const SevenLines& in, int width, MutableLine out);
void VerticalSmooth7Line(const SevenLines& in, const std::array<Sample, 4>& taps, int width,
                         MutableLine out);

/// Horizontal pass (1, 2, 1) with a gain of 4. The last column adds its new left neighbour.
void HorizontalSmooth121Line(Line in, int width, MutableLine out);

/// Horizontal pass (far, 4, centre, 4, far) / 4; the two outer columns on each side are multiplied
/// by `border`.
void HorizontalSmooth5Line(Line in, Sample centre, Sample far, Sample border, int width,
                           MutableLine out);

/// Reference (1, 2, 1) down the columns with a gain of 16.
void ReferenceLine(const SevenLines& in, int width, MutableLine out);

/// In place: smooth0 becomes reference minus the blend of both, `weight` eighths of the second.
void BlendLine(Line reference, Line smooth1, Sample weight, int width, MutableLine smooth0);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_R_APC_PROCS_H

/// Detail, taken in the direction in which the picture changes less.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_MAIN_H
#define DEIMG_STAGES_LUMA_A_FILTER_MAIN_H

#include "graph/component.h"
#include "graph/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

/// Subtracts the signal smoothed in both directions from the one smoothed vertically (where the
/// picture changes more along the line) or interpolated horizontally (elsewhere), and weights the
/// difference by a gain that grows with the size of the direction measure.
///
/// Inputs: VHDiff, VerLpf (4 x the mosaic's scale), HorLpf (16 x), A-Filter Hokan LPF (2 x).
/// Output: port 0, signed detail, 16 x.
class AFilterMain final : public ComponentX {
 public:
  /// Entries of the gain table; the last one serves every larger direction measure.
  static constexpr int kGainTableSize = 257;

  explicit AFilterMain(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  [[nodiscard]] Result BuildGainTable();

  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
  BlockOf<Sample> gainTable_;  // 32nds, by the size of the direction measure
};

/// Fills the gain table: 0 below `coreLevel`, then a ramp of 256 >> `slopeShift` eighths per unit,
/// then 32. `slopeShift` is 0 to 8.
void BuildAFilterGainTable(int slopeShift, int coreLevel, Sample* table);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_A_FILTER_MAIN_H

/// Interpolation of the mosaic into four colour planes.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_VH_H
#define DEIMG_STAGES_COLOUR_HOKAN_VH_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Interpolates the white-balanced mosaic; where the picture changes along the line by more than a
/// threshold, the two green planes exchange their values.
///
/// Inputs: White Balance, three lines; VHDiff. Output: ports 0 to 3, R, Gr, Gb and B, four times
/// the mosaic's scale.
template <typename T>
class HokanVH final : public ComponentX {
 public:
  explicit HokanVH(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_HOKAN_VH_H

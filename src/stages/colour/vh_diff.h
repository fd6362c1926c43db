/// How much the picture changes down the columns and along the lines.
#ifndef DEIMG_STAGES_COLOUR_VH_DIFF_H
#define DEIMG_STAGES_COLOUR_VH_DIFF_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Direction measure: vertical minus horizontal activity of the white-balanced mosaic.
///
/// Input: White Balance port 0, five lines. Output: port 0, in the mosaic's scale, signed; negative
/// where the picture changes more along the line.
template <typename T>
class VHDiff final : public ComponentX {
 public:
  explicit VHDiff(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_VH_DIFF_H

/// Median of the colour differences.
#ifndef DEIMG_STAGES_COLOUR_MEDIAN_CRCB_H
#define DEIMG_STAGES_COLOUR_MEDIAN_CRCB_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Removes isolated colour errors: the exact median of three lines by five columns, of red minus
/// green and blue minus green. Switched off it writes nothing.
///
/// Input: the colour-difference interpolation, ports 0 and 3, three lines. Output: ports 0 and 1,
/// the same scale.
template <typename T>
class MedianCrCb final : public ComponentX {
 public:
  explicit MedianCrCb(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const bool filter_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MEDIAN_CRCB_H

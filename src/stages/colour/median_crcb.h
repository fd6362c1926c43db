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
class MedianCrCb final : public ComponentX {
 public:
  explicit MedianCrCb(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const bool filter_;
};

/// One line of medians; the two outer columns on each side are copied from the centre line. The
/// scratch lines hold the columns' three values in ascending order.
void MedianLine(const Sample* above, const Sample* centre, const Sample* below, int width,
                Sample* lowest, Sample* middle, Sample* highest, Sample* out);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MEDIAN_CRCB_H

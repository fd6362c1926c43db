/// Kernels of the stage in vh_diff.h.
#ifndef DEIMG_STAGES_COLOUR_VH_DIFF_KERNELS_H
#define DEIMG_STAGES_COLOUR_VH_DIFF_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// One line; u2, u1, m, d1, d2 are the lines two above to two below. Samples two apart have the
/// same colour. The two outer columns on each side are 0.
static void DirectionMeasureLine(Line u2, Line u1, Line m, Line d1, Line d2, int width,
                                 MutableLine out) {
  out[0] = out[1] = out[width - 2] = out[width - 1] = 0;
  for (Index x = 2; x < width - 2; ++x) {
    const Sample horizontal = Abs(2 * m[x] - m[x - 2] - m[x + 2]) + Abs(m[x - 1] - m[x + 1]);
    const Sample vertical = Abs(2 * m[x] - u2[x] - d2[x]) + Abs(u1[x] - d1[x]);
    out[x] = vertical - horizontal;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_VH_DIFF_KERNELS_H

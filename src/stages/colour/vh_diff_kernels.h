/// Kernels of the stage in vh_diff.h.
#ifndef DEIMG_STAGES_COLOUR_VH_DIFF_KERNELS_H
#define DEIMG_STAGES_COLOUR_VH_DIFF_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// One line; u2, u1, m, d1, d2 are the lines two above to two below. Samples two apart have the
/// same colour. The two outer columns on each side are 0.
template <typename T>
static void DirectionMeasureLine(LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1,
                                 LineOf<T> d2, int width, MutableLineOf<T> out) {
  out[0] = out[1] = out[width - 2] = out[width - 1] = 0;
  for (Index x = 2; x < width - 2; ++x) {
    const auto horizontal = static_cast<T>(Abs(static_cast<T>(2 * m[x] - m[x - 2] - m[x + 2])) +
                                           Abs(static_cast<T>(m[x - 1] - m[x + 1])));
    const auto vertical = static_cast<T>(Abs(static_cast<T>(2 * m[x] - u2[x] - d2[x])) +
                                         Abs(static_cast<T>(u1[x] - d1[x])));
    out[x] = static_cast<T>(vertical - horizontal);
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_VH_DIFF_KERNELS_H

/// Kernel of the curve in apc_curve.h.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_KERNELS_H
#define DEIMG_STAGES_LUMA_APC_CURVE_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// In place: maps the magnitudes of a line of samples, divided by 2 to the power of `shift` and
/// clamped to the table's last entry, and keeps the signs of the quotients.
static void ApcCurveLine(const Sample* __restrict table, Sample last, int shift, int width,
                         MutableLine line) {
  for (Index x = 0; x < width; ++x) {
    // The smallest integer has no positive counterpart; the one above it has the same entry.
    const Sample v = Max(line[x], -2147483647);
    const Sample quotient = Abs(v) >> shift;
    const Sample magnitude = table[Min(quotient, last)];
    line[x] = v < 0 && quotient != 0 ? -magnitude : magnitude;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_KERNELS_H

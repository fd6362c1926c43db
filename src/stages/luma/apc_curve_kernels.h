/// Kernel of the curve in apc_curve.h.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_KERNELS_H
#define DEIMG_STAGES_LUMA_APC_CURVE_KERNELS_H

#include <cstdint>

#include "graph/kernel_math.h"
#include "graph/kernels.h"
#include "graph/line.h"

namespace deimg {

/// In place: maps the magnitudes of a line of samples, divided by 2 to the power of `shift` and
/// clamped, through the curve's three segments, and keeps the signs of the quotients. Computing the
/// curve costs half of what looking it up in a table of 32 KB does.
static void ApcCurveLine(const ApcSegments& curve, int shift, int width, MutableLine line) {
  const Sample knee1 = curve.knee1, knee2 = curve.knee2, last = curve.last;
  const Sample q1 = curve.slope[0], q2 = curve.slope[1], q3 = curve.slope[2];
  const Sample c1 = curve.offset[0], c2 = curve.offset[1], c3 = curve.offset[2];
  for (Index x = 0; x < width; ++x) {
    // The smallest integer has no positive counterpart; the one above it is clamped like it.
    const Sample v = Max(line[x], -2147483647);
    const Sample quotient = Abs(v) >> shift;
    const Sample i = Min(quotient, last);
    const Sample steep = (i < knee1 ? i * q1 + c1 : i * q2 + c2) / 4;
    const Sample value = i < knee2 ? steep : (i * q3 + c3) / 2048;
    const Sample magnitude = Max(static_cast<std::int16_t>(value), 0);
    line[x] = v < 0 && quotient != 0 ? -magnitude : magnitude;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_KERNELS_H

/// Kernels of the stage in h_apc_procs.h.
#ifndef DEIMG_STAGES_LUMA_H_APC_PROCS_KERNELS_H
#define DEIMG_STAGES_LUMA_H_APC_PROCS_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"
#include "stages/luma/apc_curve_kernels.h"

namespace deimg {

/// The curves of the high-passes (-1, 0, 2, 0, -1) / 4 and (1, -4, -1, 8, -1, -4, 1) / 16, which
/// are 0 in the columns without all neighbours.
static void NarrowHighPassLine(Line in, const ApcSegments& curve, int width, MutableLine out) {
  const auto zero = [](Index) { return Sample{0}; };
  ApcCurveColumns(curve, 0, 0, 2, zero, out);
  ApcCurveColumns(
      curve, 2, 2, width - 2, [&](Index x) { return 2 * in[x] - in[x - 2] - in[x + 2]; }, out);
  ApcCurveColumns(curve, 0, width - 2, width, zero, out);
}

static void WideHighPassLine(Line in, const ApcSegments& curve, int width, MutableLine out) {
  const auto zero = [](Index) { return Sample{0}; };
  ApcCurveColumns(curve, 0, 0, 3, zero, out);
  ApcCurveColumns(
      curve, 4, 3, width - 3,
      [&](Index x) {
        return 8 * in[x] - (in[x - 1] + in[x + 1]) - 4 * (in[x - 2] + in[x + 2]) +
               (in[x - 3] + in[x + 3]);
      },
      out);
  ApcCurveColumns(curve, 0, width - 3, width, zero, out);
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_H_APC_PROCS_KERNELS_H

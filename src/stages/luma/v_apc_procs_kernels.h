/// Kernels of the stage in v_apc_procs.h.
#ifndef DEIMG_STAGES_LUMA_V_APC_PROCS_KERNELS_H
#define DEIMG_STAGES_LUMA_V_APC_PROCS_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/kernels.h"
#include "graph/line.h"
#include "stages/luma/apc_curve_kernels.h"

namespace deimg {

/// High-passes down the columns: (-1, 0, 2, 0, -1) / 2 and (1, -4, -1, 8, -1, -4, 1) / 8.
template <typename T>
static void VerticalHighPass3Line(LineOf<T> u2, LineOf<T> m, LineOf<T> d2, int width,
                                  MutableLine out) {
  for (Index x = 0; x < width; ++x) out[x] = (2 * m[x] - u2[x] - d2[x]) / 2;
}

template <typename T>
static void VerticalHighPass7Line(const SevenLines<T>& in, int width, MutableLine out) {
  const LineOf<T> u3 = in.line[0], u2 = in.line[1], u1 = in.line[2], m = in.line[3],
                  d1 = in.line[4], d2 = in.line[5], d3 = in.line[6];
  for (Index x = 0; x < width; ++x) {
    out[x] = (8 * m[x] - (u1[x] + d1[x]) - 4 * (u2[x] + d2[x]) + (u3[x] + d3[x])) / 8;
  }
}

/// The curve of (1, 4, 6, 4, 1) / 16 along the line; the two outer columns on each side are not
/// smoothed.
static void SmoothDetailLine(Line in, const ApcSegments& curve, int width, MutableLine out) {
  const auto own = [&](Index x) { return in[x]; };
  ApcCurveColumns(curve, 0, 0, 2, own, out);
  ApcCurveColumns(
      curve, 4, 2, width - 2,
      [&](Index x) { return 6 * in[x] + 4 * (in[x - 1] + in[x + 1]) + (in[x - 2] + in[x + 2]); },
      out);
  ApcCurveColumns(curve, 0, width - 2, width, own, out);
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_V_APC_PROCS_KERNELS_H

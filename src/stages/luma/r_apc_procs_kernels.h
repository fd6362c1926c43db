/// Kernels of the stage in r_apc_procs.h.
#ifndef DEIMG_STAGES_LUMA_R_APC_PROCS_KERNELS_H
#define DEIMG_STAGES_LUMA_R_APC_PROCS_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/kernels.h"
#include "graph/line.h"
#include "stages/luma/apc_curve_kernels.h"

namespace deimg {

/// Vertical low-passes with a gain of 4: (1, 4, 6, 4, 1) / 4, and two of seven taps in sixteenths.
template <typename T>
static void VerticalSmooth5Line(const SevenLines<T>& in, int width, MutableLine out) {
  const LineOf<T> u2 = in.line[1], u1 = in.line[2], m = in.line[3], d1 = in.line[4],
                  d2 = in.line[5];
  for (Index x = 0; x < width; ++x) {
    out[x] = (6 * m[x] + 4 * (u1[x] + d1[x]) + (u2[x] + d2[x])) / 4;
  }
}

template <typename T>
static void VerticalSmooth7Line(const SevenLines<T>& in, const Sample* taps, int width,
                                MutableLine out) {
  const LineOf<T> u3 = in.line[0], u2 = in.line[1], u1 = in.line[2], m = in.line[3],
                  d1 = in.line[4], d2 = in.line[5], d3 = in.line[6];
  const Sample t0 = taps[0], t1 = taps[1], t2 = taps[2], t3 = taps[3];
  for (Index x = 0; x < width; ++x) {
    out[x] = (t0 * m[x] + t1 * (u1[x] + d1[x]) + t2 * (u2[x] + d2[x]) + t3 * (u3[x] + d3[x])) / 16;
  }
}

/// Horizontal pass (1, 2, 1) with a gain of 4. The last column adds its new left neighbour.
static void HorizontalSmooth121Line(Line in, int width, MutableLine out) {
  const int last = width - 1;
  out[0] = 2 * in[0] + 2 * in[1];
  for (Index x = 1; x < last; ++x) out[x] = in[x - 1] + 2 * in[x] + in[x + 1];
  out[last] = 2 * out[last - 1] + 2 * in[last];
}

/// Horizontal pass (far, 4, centre, 4, far) / 4; the two outer columns on each side are multiplied
/// by `border`.
static void HorizontalSmooth5Line(Line in, Sample centre, Sample far, Sample border, int width,
                                  MutableLine out) {
  out[0] = border * in[0];
  out[1] = border * in[1];
  out[width - 2] = border * in[width - 2];
  out[width - 1] = border * in[width - 1];
  for (Index x = 2; x < width - 2; ++x) {
    out[x] = (centre * in[x] + 4 * (in[x - 1] + in[x + 1]) + far * (in[x - 2] + in[x + 2])) / 4;
  }
}

/// The curve of a reference, (1, 2, 1) down the columns with a gain of 16, minus the blend of both
/// smooth lines, `weight` eighths of the second.
template <typename T>
static void SharpenLine(const SevenLines<T>& in, Line smooth0, Line smooth1, Sample weight,
                        const ApcSegments& curve, int width, MutableLine out) {
  const LineOf<T> u1 = in.line[2], m = in.line[3], d1 = in.line[4];
  const Sample rest = 8 - weight;
  ApcCurveColumns(
      curve, 3, 0, width,
      [&](Index x) {
        const Sample reference = (u1[x] + 2 * m[x] + d1[x]) * 4;
        return 8 * reference - rest * smooth0[x] - weight * smooth1[x];
      },
      out);
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_R_APC_PROCS_KERNELS_H

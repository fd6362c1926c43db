/// Kernels of the stage in h_apc_procs.h.
#ifndef DEIMG_STAGES_LUMA_H_APC_PROCS_KERNELS_H
#define DEIMG_STAGES_LUMA_H_APC_PROCS_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// High-passes (-1, 0, 2, 0, -1) / 4 and (1, -4, -1, 8, -1, -4, 1) / 16; the columns without all
/// neighbours are 0.
static void NarrowHighPassLine(Line in, int width, MutableLine out) {
  out[0] = out[1] = out[width - 2] = out[width - 1] = 0;
  for (Index x = 2; x < width - 2; ++x) out[x] = (2 * in[x] - in[x - 2] - in[x + 2]) / 4;
}

static void WideHighPassLine(Line in, int width, MutableLine out) {
  for (Index x = 0; x < 3; ++x) out[x] = out[width - 1 - x] = 0;
  for (Index x = 3; x < width - 3; ++x) {
    out[x] = (8 * in[x] - (in[x - 1] + in[x + 1]) - 4 * (in[x - 2] + in[x + 2]) +
              (in[x - 3] + in[x + 3])) /
             16;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_H_APC_PROCS_KERNELS_H

/// Kernels of the stage in a_filter_main.h.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_MAIN_KERNELS_H
#define DEIMG_STAGES_LUMA_A_FILTER_MAIN_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// One line.
static void AFilterLine(Line direction, Line vertical, Line both, Line horizontal,
                        const Sample* gains, int width, MutableLine out) {
  constexpr Sample kLast = 256;
  for (Index x = 0; x < width; ++x) {
    const Sample d = direction[x];
    const Sample magnitude = Abs(d);
    const Sample smoothed = d < 0 ? 4 * vertical[x] : 8 * horizontal[x];
    out[x] = (smoothed - both[x]) * gains[Clamp(magnitude, 0, kLast)] / 32;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_A_FILTER_MAIN_KERNELS_H

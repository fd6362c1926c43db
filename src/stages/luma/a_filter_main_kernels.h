/// Kernels of the stage in a_filter_main.h.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_MAIN_KERNELS_H
#define DEIMG_STAGES_LUMA_A_FILTER_MAIN_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// One line.
template <typename T>
static void AFilterLine(LineOf<T> direction, Line vertical, Line both, LineOf<T> horizontal,
                        const AFilterGain& gain, int width, MutableLine out) {
  const Sample core = gain.core, step = gain.step, full = gain.full;
  for (Index x = 0; x < width; ++x) {
    const Sample d = direction[x];
    const Sample size = Clamp(Abs(d), 0, AFilterGain::kLargestSize);
    const Sample g = size < full ? (Max(size - core, 0) * step) >> 3 : AFilterGain::kFull;
    const Sample smoothed = BySign(d, 4 * vertical[x], 8 * horizontal[x]);
    out[x] = (smoothed - both[x]) * g / 32;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_A_FILTER_MAIN_KERNELS_H

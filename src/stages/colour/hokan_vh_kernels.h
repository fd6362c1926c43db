/// Kernels of the stage in hokan_vh.h.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_VH_KERNELS_H
#define DEIMG_STAGES_COLOUR_HOKAN_VH_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Exchanges gr and gb wherever the direction is below -threshold.
static void ExchangeGreensLine(Line direction, Sample threshold, int width, MutableLine gr,
                               MutableLine gb) {
  for (Index x = 0; x < width; ++x) {
    const bool exchange = direction[x] < -threshold;
    const Sample first = gr[x];
    const Sample second = gb[x];
    gr[x] = exchange ? second : first;
    gb[x] = exchange ? first : second;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_HOKAN_VH_KERNELS_H

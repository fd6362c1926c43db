/// Kernels of the stage in hokan_vh.h.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_VH_KERNELS_H
#define DEIMG_STAGES_COLOUR_HOKAN_VH_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Exchanges gr and gb wherever the direction is below -threshold.
template <typename T>
static void ExchangeGreensLine(LineOf<T> direction, Sample threshold, int width,
                               MutableLineOf<T> gr, MutableLineOf<T> gb) {
  const T limit = Nearest<T>(-threshold);
  for (Index x = 0; x < width; ++x) {
    const bool exchange = direction[x] < limit;
    const T first = gr[x];
    const T second = gb[x];
    gr[x] = exchange ? second : first;
    gb[x] = exchange ? first : second;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_HOKAN_VH_KERNELS_H

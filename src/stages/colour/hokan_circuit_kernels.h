/// Kernels of the stage in hokan_circuit.h.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_KERNELS_H
#define DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Replaces red and blue by their differences from green. The greens change roles where the
/// direction is below -threshold and `choose` is set. A tie goes to the greens of the direction.
template <typename T>
static void ColourDifferenceLine(LineOf<T> direction, Sample threshold, bool choose, LineOf<T> gr,
                                 LineOf<T> gb, int width, MutableLineOf<T> red,
                                 MutableLineOf<T> blue) {
  // Nothing lies below the lowest value.
  const T limit = choose ? Nearest<T>(-threshold) : kLowest<T>;
  for (Index x = 0; x < width; ++x) {
    const auto average = static_cast<T>(static_cast<T>(gr[x] + gb[x]) / 2);
    const auto averageRed = static_cast<T>(red[x] - average);
    const auto averageBlue = static_cast<T>(blue[x] - average);
    const bool exchange = direction[x] < limit;
    const auto directedRed = static_cast<T>(red[x] - (exchange ? gb[x] : gr[x]));
    const auto directedBlue = static_cast<T>(blue[x] - (exchange ? gr[x] : gb[x]));
    const bool useAverage = static_cast<T>(Abs(directedRed) + Abs(directedBlue)) >
                            static_cast<T>(Abs(averageRed) + Abs(averageBlue));
    red[x] = useAverage ? averageRed : directedRed;
    blue[x] = useAverage ? averageBlue : directedBlue;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_KERNELS_H

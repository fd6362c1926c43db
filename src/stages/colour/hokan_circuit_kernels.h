/// Kernels of the stage in hokan_circuit.h.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_KERNELS_H
#define DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Replaces red and blue by their differences from green. The greens change roles where the
/// direction is below -threshold and `choose` is set. A tie goes to the greens of the direction.
static void ColourDifferenceLine(Line direction, Sample threshold, bool choose, Line gr, Line gb,
                                 int width, MutableLine red, MutableLine blue) {
  for (Index x = 0; x < width; ++x) {
    const Sample average = (gr[x] + gb[x]) / 2;
    const Sample averageRed = red[x] - average;
    const Sample averageBlue = blue[x] - average;
    const bool exchange = choose && direction[x] < -threshold;
    const Sample directedRed = red[x] - (exchange ? gb[x] : gr[x]);
    const Sample directedBlue = blue[x] - (exchange ? gr[x] : gb[x]);
    const bool useAverage =
        Abs(directedRed) + Abs(directedBlue) > Abs(averageRed) + Abs(averageBlue);
    red[x] = useAverage ? averageRed : directedRed;
    blue[x] = useAverage ? averageBlue : directedBlue;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_KERNELS_H

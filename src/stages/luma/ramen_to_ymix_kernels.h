/// Kernels of the stage in ramen_to_ymix.h.
#ifndef DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_KERNELS_H
#define DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// enhanced = luminance + detail x gain / 8; mixed takes detail x mixGain / 8 back.
static void AddDetailLine(Line luminance, Line detail, Sample gain, Sample mixGain, int width,
                          MutableLine mixed, MutableLine enhanced) {
  for (Index x = 0; x < width; ++x) {
    const Sample sum = luminance[x] + detail[x] * gain / 8;
    enhanced[x] = sum;
    mixed[x] = sum - detail[x] * mixGain / 8;
  }
}

/// In place: weights the line with red and blue, each smoothed by 1, 2, 1, and subtracts the
/// pedestal.
template <typename T>
static void MixLine(LineOf<T> r, LineOf<T> b, const std::int16_t* weights, Sample pedestal,
                    int width, MutableLine y) {
  const Sample wR = weights[0], wY = weights[1], wB = weights[2];
  const auto mix = [&](Sample own, Sample red, Sample blue) {
    return (own * wY + red * wR + blue * wB) / 256 - pedestal;
  };
  const int last = width - 1;
  y[0] = mix(y[0], 4 * r[0], 4 * b[0]);
  for (Index x = 1; x < last; ++x) {
    y[x] = mix(y[x], r[x - 1] + 2 * r[x] + r[x + 1], b[x - 1] + 2 * b[x] + b[x + 1]);
  }
  y[last] = mix(y[last], 4 * r[last], 4 * b[last]);
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_KERNELS_H

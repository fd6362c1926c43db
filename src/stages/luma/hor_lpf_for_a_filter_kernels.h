/// Kernels of the stage in hor_lpf_for_a_filter.h.
#ifndef DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_KERNELS_H
#define DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

template <int tapCount>
static void FilterTapsLine(Line in, const Sample* taps, Sample divisor, int width,
                           MutableLine out) {
  constexpr int half = tapCount / 2;
  for (Index x = half; x < width - half; ++x) {
    Sample sum = 0;
    for (int i = 0; i < tapCount; ++i) sum += taps[i] * in[x - half + i];
    out[x] = divisor == 1 ? sum : sum / divisor;
  }
}

/// The graph's kernel.
static void Filter121Line(Line in, int width, MutableLine out) {
  for (Index x = 1; x < width - 1; ++x) out[x] = in[x - 1] + 2 * in[x] + in[x + 1];
}

/// One line with an odd number of taps. Columns without all neighbours are multiplied by the
/// kernel's gain.
static void HorLpfLine(Line in, const Sample* taps, int tapCount, Sample divisor, int width,
                       MutableLine out) {
  Sample sum = 0;
  for (int i = 0; i < tapCount; ++i) sum += taps[i];
  const Sample gain = sum / divisor;
  const int half = Min(tapCount / 2, width);
  for (Index x = 0; x < half; ++x) {
    out[x] = in[x] * gain;
    out[width - 1 - x] = in[width - 1 - x] * gain;
  }
  switch (tapCount) {
    case 3:
      if (divisor == 1 && taps[0] == 1 && taps[1] == 2 && taps[2] == 1) {
        Filter121Line(in, width, out);
      } else {
        FilterTapsLine<3>(in, taps, divisor, width, out);
      }
      break;
    case 5:
      FilterTapsLine<5>(in, taps, divisor, width, out);
      break;
    case 7:
      FilterTapsLine<7>(in, taps, divisor, width, out);
      break;
    case 9:
      FilterTapsLine<9>(in, taps, divisor, width, out);
      break;
    default:
      break;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_KERNELS_H

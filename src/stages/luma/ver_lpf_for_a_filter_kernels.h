/// Kernels of the stage in ver_lpf_for_a_filter.h.
#ifndef DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_KERNELS_H
#define DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/kernels.h"
#include "graph/line.h"

namespace deimg {

/// `own` is the parity of the columns that hold the low-passed sites themselves.
template <int own, typename T>
static inline void FilterSitesLine(LineOf<T> u3, LineOf<T> u2, LineOf<T> u1, LineOf<T> m,
                                   LineOf<T> d1, LineOf<T> d2, LineOf<T> d3, const Sample* taps,
                                   int width, MutableLine out) {
  const Sample t0 = taps[0], t1 = taps[1], t2 = taps[2], t3 = taps[3];
  ColumnOf<Sample> column = 0;
  for (Index x = 0; x < width; ++x, ++column) {
    const Sample site = t3 * m[x] + t1 * (u2[x] + d2[x]);
    const Sample between = t2 * (u1[x] + d1[x]) + t0 * (u3[x] + d3[x]);
    out[x] = ByParity<Sample>(column, own == 0 ? site : between, own == 0 ? between : site) / 4;
  }
}

/// One line; `lines` are the seven mosaic lines from three above to three below.
template <typename T>
static void VerLpfLine(const SevenLines<T>& in, const Sample* taps, bool oddLine, int width,
                       MutableLine out) {
  const T* const* const l = in.line;
  const auto filterLine = oddLine ? FilterSitesLine<0, T> : FilterSitesLine<1, T>;
  filterLine(l[0], l[1], l[2], l[3], l[4], l[5], l[6], taps, width, out);
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_KERNELS_H

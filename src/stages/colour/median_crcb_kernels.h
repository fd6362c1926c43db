/// Kernels of the stage in median_crcb.h.
#ifndef DEIMG_STAGES_COLOUR_MEDIAN_CRCB_KERNELS_H
#define DEIMG_STAGES_COLOUR_MEDIAN_CRCB_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Sorts the three values of every column.
static void SortColumnsLine(Line above, Line centre, Line below, int width, MutableLine lowest,
                            MutableLine middle, MutableLine highest) {
  for (Index x = 0; x < width; ++x) {
    const Sample low = Min(above[x], below[x]);
    const Sample high = Max(above[x], below[x]);
    lowest[x] = Min(low, centre[x]);
    highest[x] = Max(high, centre[x]);
    middle[x] = Max(low, Min(high, centre[x]));
  }
}

static inline void Order(Sample& low, Sample& high) {
  const Sample smaller = Min(low, high);
  high = Max(low, high);
  low = smaller;
}

static inline Sample MedianOf5(Sample a, Sample b, Sample c, Sample d, Sample e) {
  Order(a, b);
  Order(c, d);
  Sample low = Max(a, c);
  Sample high = Min(b, d);
  Order(low, high);
  return Max(low, Min(high, e));
}

/// Medians of five neighbouring columns, each sorted. Sorting the five smallest, the five middle
/// and the five largest values among themselves leaves seven candidates: the two largest of the
/// smallest, the middle three of the middle ones, and the two smallest of the largest. Of the other
/// eight values four are below and four above, so the median of the seven is the median of all.
static void MedianOfColumnsLine(Line lowest, Line middle, Line highest, int width,
                                MutableLine out) {
  for (Index x = 2; x < width - 2; ++x) {
    Sample l0 = lowest[x - 2], l1 = lowest[x - 1], l2 = lowest[x], l3 = lowest[x + 1];
    Order(l0, l1);
    Order(l2, l3);
    const Sample l4 = lowest[x + 2];
    const Sample top = Max(l1, l3);
    Sample p = Max(Max(Min(l1, l3), Max(l0, l2)), Min(top, l4));
    Sample q = Max(top, l4);

    Sample h0 = highest[x - 2], h1 = highest[x - 1], h2 = highest[x], h3 = highest[x + 1];
    Order(h0, h1);
    Order(h2, h3);
    const Sample h4 = highest[x + 2];
    const Sample bottom = Min(h0, h2);
    Sample u = Min(bottom, h4);
    Sample v = Min(Min(Max(h0, h2), Min(h1, h3)), Max(bottom, h4));

    Sample m0 = middle[x - 2], m1 = middle[x - 1], m2 = middle[x], m3 = middle[x + 1];
    Sample m4 = middle[x + 2];
    Order(m0, m1);
    Order(m3, m4);
    Order(m2, m4);
    Order(m2, m3);
    Order(m1, m4);
    Order(m0, m3);
    Order(m0, m2);
    Order(m1, m3);
    Order(m1, m2);

    // p <= q, m1 <= m2 <= m3, u <= v: drop the smallest and the largest of the seven.
    Order(p, m1);
    u = Max(p, u);
    Order(q, m3);
    v = Min(m3, v);
    out[x] = MedianOf5(m1, u, q, v, m2);
  }
}

/// One line of medians; the two outer columns on each side are copied from the centre line. The
/// scratch lines hold the columns' three values in ascending order.
static void MedianLine(const Sample* above, const Sample* centre, const Sample* below, int width,
                       Sample* lowest, Sample* middle, Sample* highest, Sample* out) {
  SortColumnsLine(above, centre, below, width, lowest, middle, highest);
  MedianOfColumnsLine(lowest, middle, highest, width, out);
  out[0] = centre[0];
  out[1] = centre[1];
  out[width - 2] = centre[width - 2];
  out[width - 1] = centre[width - 1];
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MEDIAN_CRCB_KERNELS_H

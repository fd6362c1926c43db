/// Kernels of the reduction in preview_reduction.h.
#ifndef DEIMG_DECODE_PREVIEW_KERNELS_H
#define DEIMG_DECODE_PREVIEW_KERNELS_H

#include <cstdint>

#include "graph/kernels.h"
#include "graph/line.h"

namespace deimg {

/// Takes the samples of one mosaic position from a plane line, every second one.
static inline void PickLine(LineOf<std::uint16_t> line, int count,
                            MutableLineOf<std::uint16_t> picked) {
  for (Index j = 0; j < count; ++j) picked[j] = line[2 * j];
}

static inline void SplitIntoThirds(LineOf<std::uint16_t> line, int count,
                                   MutableLineOf<std::uint16_t> first,
                                   MutableLineOf<std::uint16_t> second,
                                   MutableLineOf<std::uint16_t> third) {
  for (Index j = 0; j < count; ++j) {
    first[j] = line[3 * j];
    second[j] = line[3 * j + 1];
    third[j] = line[3 * j + 2];
  }
}

/// Splits the samples of one mosaic position on a plane line, two columns apart, into every third
/// one each: `cells` of them. `picked` holds the samples in between: compilers have vectors for
/// steps of two and of three, but not of six.
static void SplitPositionLine(const std::uint16_t* line, int cells, std::uint16_t* picked,
                              std::uint16_t* first, std::uint16_t* second, std::uint16_t* third) {
  PickLine(line, 3 * cells, picked);
  SplitIntoThirds(picked, cells, first, second, third);
}

/// The grid lines at one vertical position, in quarters.
static void WeightGridLine(LineOf<std::uint16_t> g0, LineOf<std::uint16_t> g1,
                           LineOf<std::uint16_t> g2, LineOf<std::uint16_t> g3,
                           const Sample* weights, int count, MutableLine out) {
  const Sample w0 = weights[0], w1 = weights[1], w2 = weights[2], w3 = weights[3];
  for (Index j = 0; j < count; ++j) out[j] = w0 * g0[j] + w1 * g1[j] + w2 * g2[j] + w3 * g3[j];
}

/// Half a row from two vertical positions a and b, each split into every third sample: three grid
/// steps along the line become four values (at 0, 0.75, 1.5 and 2.25), and 2 x 2 of them their
/// average.
static void ShrinkRow(const ShrinkLines& a, const ShrinkLines& b, int cells,
                      MutableLineOf<std::uint16_t> row) {
  const Line a0 = a.third[0], a1 = a.third[1], a2 = a.third[2];
  const Line b0 = b.third[0], b1 = b.third[1], b2 = b.third[2];
  for (Index j = 0; j < cells; ++j) {
    const Sample left = (4 * a0[j] >> 4) + ((a0[j] + 3 * a1[j]) >> 4) + (4 * b0[j] >> 4) +
                        ((b0[j] + 3 * b1[j]) >> 4);
    const Sample right = ((2 * a1[j] + 2 * a2[j]) >> 4) + ((3 * a2[j] + a0[j + 1]) >> 4) +
                         ((2 * b1[j] + 2 * b2[j]) >> 4) + ((3 * b2[j] + b0[j + 1]) >> 4);
    row[2 * j] = static_cast<std::uint16_t>(left >> 2);
    row[2 * j + 1] = static_cast<std::uint16_t>(right >> 2);
  }
}

/// Half of four rows, weights 1 3 3 1 in each direction: `count` values, two columns apart, the
/// first of them at column 0 from two columns only.
static void HalveRow(LineOf<std::uint16_t> r0, LineOf<std::uint16_t> r1, LineOf<std::uint16_t> r2,
                     LineOf<std::uint16_t> r3, int count, MutableLineOf<std::uint16_t> out) {
  const auto column = [&](Index x) { return r0[x] + 3 * r1[x] + 3 * r2[x] + r3[x]; };
  out[0] = static_cast<std::uint16_t>((column(0) + column(1)) >> 4);
  for (Index m = 1; m < count; ++m) {
    const Index x = 2 * m;
    out[m] = static_cast<std::uint16_t>(
        (column(x - 1) + 3 * column(x) + 3 * column(x + 1) + column(x + 2)) >> 6);
  }
}

}  // namespace deimg

#endif  // DEIMG_DECODE_PREVIEW_KERNELS_H

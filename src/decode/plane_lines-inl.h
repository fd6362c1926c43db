/// Loops over lines of the sensor plane, compiled once per instruction level.
#ifndef DEIMG_DECODE_PLANE_LINES_INL_H
#define DEIMG_DECODE_PLANE_LINES_INL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/level.h"
#include "decode/plane_lines.h"

namespace deimg::DEIMG_LEVEL {

using InLine = const std::uint16_t* __restrict;
using OutLine = std::uint16_t* __restrict;
using SumLine = const std::int32_t* __restrict;

/// Four columns of even and odd samples each.
using Columns = std::uint16_t __attribute__((vector_size(16)));

/// Continues a predictor for even and one for odd columns with `count` differences, a multiple of
/// four, and appends two low bits to each sum; four samples share a byte of them, lowest bits
/// first. All sums are modulo 2^16.
static void AccumulateLine(const std::int16_t* __restrict differences,
                           const std::uint8_t* __restrict lowBits, int count,
                           std::uint16_t* __restrict predictors, OutLine samples) {
  const std::uint16_t even = predictors[0], odd = predictors[1];
  Columns before = {even, odd, even, odd, even, odd, even, odd};
  const Columns none = {},
                toTheTop = {1 << 14, 1 << 12, 1 << 10, 1 << 8, 1 << 6, 1 << 4, 1 << 2, 1};
  std::ptrdiff_t i = 0;
  for (; i + 8 <= count; i += 8) {
    Columns sum;
    std::memcpy(&sum, differences + i, sizeof(sum));
    sum += __builtin_shufflevector(sum, none, 8, 9, 0, 1, 2, 3, 4, 5);
    sum += __builtin_shufflevector(sum, none, 8, 9, 10, 11, 0, 1, 2, 3);
    const auto bits = static_cast<std::uint16_t>(lowBits[i / 4] | lowBits[i / 4 + 1] << 8);
    const Columns low = bits * toTheTop >> 14;
    const Columns sample = (sum + before) << 2 | low;
    before += __builtin_shufflevector(sum, sum, 6, 7, 6, 7, 6, 7, 6, 7);
    std::memcpy(samples + i, &sample, sizeof(sample));
  }
  predictors[0] = before[0];
  predictors[1] = before[1];
  for (; i < count; ++i) {
    std::uint16_t& predictor = predictors[i % 2];
    predictor = static_cast<std::uint16_t>(predictor + differences[i]);
    samples[i] = static_cast<std::uint16_t>(predictor << 2 | (lowBits[i / 4] >> i % 4 * 2 & 3));
  }
}

/// Subtracts two levels that alternate along a line of an even width; samples at or below theirs
/// become 0.
static void SubtractLevelsLine(std::uint16_t evenColumns, std::uint16_t oddColumns, int width,
                               OutLine line) {
  const auto above = [](std::uint16_t sample, std::uint16_t level) {
    return static_cast<std::uint16_t>(level < sample ? sample - level : 0);
  };
  for (std::ptrdiff_t x = 0; x < width; x += 2) {
    line[x] = above(line[x], evenColumns);
    line[x + 1] = above(line[x + 1], oddColumns);
  }
}

/// Takes the samples of one mosaic position from a plane line, every second one.
static inline void PickLine(InLine line, int count, OutLine picked) {
  for (std::ptrdiff_t j = 0; j < count; ++j) picked[j] = line[2 * j];
}

static inline void SplitIntoThirds(InLine line, int count, OutLine first, OutLine second,
                                   OutLine third) {
  for (std::ptrdiff_t j = 0; j < count; ++j) {
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

/// Three grid steps become four lines (at 0, 0.75, 1.5 and 2.25), in quarters.
static void WeightGridLines(InLine g0, InLine g1, InLine g2, InLine g3, int count,
                            std::int32_t* __restrict at0, std::int32_t* __restrict at1,
                            std::int32_t* __restrict at2, std::int32_t* __restrict at3) {
  for (std::ptrdiff_t j = 0; j < count; ++j) {
    at0[j] = 4 * g0[j];
    at1[j] = g0[j] + 3 * g1[j];
    at2[j] = 2 * (g1[j] + g2[j]);
    at3[j] = 3 * g2[j] + g3[j];
  }
}

/// Half a row from two vertical positions a and b, each split into every third sample: three grid
/// steps along the line become four values (at 0, 0.75, 1.5 and 2.25), and 2 x 2 of them their
/// average.
static void ShrinkRow(const ShrinkLines& a, const ShrinkLines& b, int cells, OutLine row) {
  const SumLine a0 = a.third[0], a1 = a.third[1], a2 = a.third[2], a3 = a.third[3];
  const SumLine b0 = b.third[0], b1 = b.third[1], b2 = b.third[2], b3 = b.third[3];
  for (std::ptrdiff_t j = 0; j < cells; ++j) {
    const std::int32_t left = (4 * a0[j] >> 4) + ((a0[j] + 3 * a1[j]) >> 4) + (4 * b0[j] >> 4) +
                              ((b0[j] + 3 * b1[j]) >> 4);
    const std::int32_t right = ((2 * a1[j] + 2 * a2[j]) >> 4) + ((3 * a2[j] + a3[j]) >> 4) +
                               ((2 * b1[j] + 2 * b2[j]) >> 4) + ((3 * b2[j] + b3[j]) >> 4);
    row[2 * j] = static_cast<std::uint16_t>(left >> 2);
    row[2 * j + 1] = static_cast<std::uint16_t>(right >> 2);
  }
}

/// Half of four rows, weights 1 3 3 1 in each direction: `count` values, two columns apart, the
/// first of them at column 0 from two columns only.
static void HalveRow(InLine r0, InLine r1, InLine r2, InLine r3, int count, OutLine out) {
  const auto column = [&](std::ptrdiff_t x) { return r0[x] + 3 * r1[x] + 3 * r2[x] + r3[x]; };
  out[0] = static_cast<std::uint16_t>((column(0) + column(1)) >> 4);
  for (std::ptrdiff_t m = 1; m < count; ++m) {
    const std::ptrdiff_t x = 2 * m;
    out[m] = static_cast<std::uint16_t>(
        (column(x - 1) + 3 * column(x) + 3 * column(x + 1) + column(x + 2)) >> 6);
  }
}

inline constexpr PlaneLines kPlaneLines = {
    .accumulate = AccumulateLine,
    .subtractLevels = SubtractLevelsLine,
    .splitPosition = SplitPositionLine,
    .weightGrid = WeightGridLines,
    .shrinkRow = ShrinkRow,
    .halveRow = HalveRow,
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_DECODE_PLANE_LINES_INL_H

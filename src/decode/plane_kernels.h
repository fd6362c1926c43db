/// Kernels of the decoder in sensor_plane_decoder.h and of black_level_subtraction.h.
#ifndef DEIMG_DECODE_PLANE_KERNELS_H
#define DEIMG_DECODE_PLANE_KERNELS_H

#include <cstdint>

#include "graph/line.h"

namespace deimg {

/// Appends two low bits to each of `count` samples, a multiple of four; four samples share a byte,
/// lowest bits first.
static void MergeLowBitsLine(LineOf<std::uint8_t> lowBits, int count,
                             MutableLineOf<std::uint16_t> samples) {
  const auto merged = [](std::uint16_t sample, int bits) {
    return static_cast<std::uint16_t>(sample << 2 | (bits & 3));
  };
  for (Index i = 0; i < count / 4; ++i) {
    const int bits = lowBits[i];
    samples[4 * i] = merged(samples[4 * i], bits);
    samples[4 * i + 1] = merged(samples[4 * i + 1], bits >> 2);
    samples[4 * i + 2] = merged(samples[4 * i + 2], bits >> 4);
    samples[4 * i + 3] = merged(samples[4 * i + 3], bits >> 6);
  }
}

/// Subtracts two levels that alternate along a line of an even width; samples at or below theirs
/// become 0.
static void SubtractLevelsLine(std::uint16_t evenColumns, std::uint16_t oddColumns, int width,
                               MutableLineOf<std::uint16_t> line) {
  const auto above = [](std::uint16_t sample, std::uint16_t level) {
    return static_cast<std::uint16_t>(level < sample ? sample - level : 0);
  };
  for (Index x = 0; x < width; x += 2) {
    line[x] = above(line[x], evenColumns);
    line[x + 1] = above(line[x + 1], oddColumns);
  }
}

}  // namespace deimg

#endif  // DEIMG_DECODE_PLANE_KERNELS_H

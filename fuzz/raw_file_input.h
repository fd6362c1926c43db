/// Where the filler of a fuzzed raw file goes.
#ifndef DEIMG_FUZZ_RAW_FILE_INPUT_H
#define DEIMG_FUZZ_RAW_FILE_INPUT_H

#include <algorithm>

#include "base/byte_order.h"
#include "job.h"

namespace deimg::fuzz {

/// Bytes of an input behind the recipe, all values little-endian.
struct Filler {
  std::uint8_t headBytes[2];  ///< bytes of the input in front of the filler
  std::uint8_t fillBytes[3];  ///< bytes of filler, modulo 2^17
  std::uint8_t value;

  static Filler Of(std::size_t head, std::size_t fill, std::uint8_t value) {
    const auto byte = [](std::size_t v, int i) { return static_cast<std::uint8_t>(v >> 8 * i); };
    return {{byte(head, 0), byte(head, 1)}, {byte(fill, 0), byte(fill, 1), byte(fill, 2)}, value};
  }

  Pieces Place(Bytes input) const {
    const std::size_t head = std::min<std::size_t>(LoadU16(headBytes, false), input.size());
    const std::uint32_t fill = LoadU16(fillBytes, false) | (fillBytes[2] & 1u) << 16;
    return {input.first(head), fill, value, input.subspan(head)};
  }
};
static_assert(sizeof(Filler) == 6);

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_RAW_FILE_INPUT_H

/// Multi-byte values in a declared byte order.
#ifndef DEIMG_BASE_BYTE_ORDER_H
#define DEIMG_BASE_BYTE_ORDER_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace deimg {

inline std::uint16_t LoadU16(const std::uint8_t* p, bool bigEndian) {
  return static_cast<std::uint16_t>(bigEndian ? p[0] << 8 | p[1] : p[1] << 8 | p[0]);
}

inline std::uint32_t LoadU32(const std::uint8_t* p, bool bigEndian) {
  const std::uint32_t first = LoadU16(p, bigEndian);
  const std::uint32_t second = LoadU16(p + 2, bigEndian);
  return bigEndian ? first << 16 | second : second << 16 | first;
}

inline std::int16_t LoadS16Little(const std::uint8_t* p) {
  return static_cast<std::int16_t>(LoadU16(p, false));
}

/// Turns samples in the machine's byte order into little-endian ones, in place.
inline void ToLittleEndian(std::uint16_t* samples, std::size_t count) {
  if constexpr (std::endian::native == std::endian::little) return;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t bytes[2] = {static_cast<std::uint8_t>(samples[i]),
                                   static_cast<std::uint8_t>(samples[i] >> 8)};
    std::memcpy(samples + i, bytes, sizeof(bytes));
  }
}

}  // namespace deimg

#endif  // DEIMG_BASE_BYTE_ORDER_H

/// Multi-byte values in a declared byte order.
#ifndef DEIMG_PROPS_BYTE_ORDER_H
#define DEIMG_PROPS_BYTE_ORDER_H

#include <cstdint>

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

}  // namespace deimg

#endif  // DEIMG_PROPS_BYTE_ORDER_H

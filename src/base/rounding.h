/// Doubles to integers, the same on every machine.
#ifndef DEIMG_BASE_ROUNDING_H
#define DEIMG_BASE_ROUNDING_H

#include <cstdint>

namespace deimg {

/// Truncates toward zero; values outside the integer range are clamped to it, and what is no number
/// counts as 0.
constexpr std::int32_t Truncated(double value) {
  if (value >= 2147483647.0) return INT32_MAX;
  if (value <= -2147483648.0) return INT32_MIN;
  return value == value ? static_cast<std::int32_t>(value) : 0;
}

/// The low 16 bits as an unsigned, and as a signed value.
constexpr std::uint16_t Low16(std::int32_t value) { return static_cast<std::uint16_t>(value); }
constexpr std::int16_t Signed16(std::int32_t value) { return static_cast<std::int16_t>(value); }

}  // namespace deimg

#endif  // DEIMG_BASE_ROUNDING_H

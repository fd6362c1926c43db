/// The values that samples can have.
///
/// Every port has a range, derived from those of the inputs and the tuning by the same steps as the
/// samples themselves. Where all ranges of a graph fit into 16 bits, its lines are narrow.
#ifndef DEIMG_LINE_RANGE_H
#define DEIMG_LINE_RANGE_H

#include <algorithm>
#include <cstdint>
#include <limits>

#include "line/line.h"

namespace deimg {

/// From `low` to `high`, both included. What could leave the 32 bits of a sample wraps there, and
/// could be anything.
struct Range {
  std::int64_t low = std::numeric_limits<Sample>::min();
  std::int64_t high = std::numeric_limits<Sample>::max();

  template <typename T>
  constexpr bool FitsIn() const {
    return low >= std::numeric_limits<T>::min() && high <= std::numeric_limits<T>::max();
  }
  constexpr bool Contains(std::int64_t value) const { return low <= value && value <= high; }

  friend constexpr bool operator==(Range, Range) = default;
};

inline constexpr Range kAnything{};

constexpr Range Wrapped(Range r) { return r.FitsIn<Sample>() ? r : kAnything; }

constexpr Range operator+(Range a, Range b) { return Wrapped({a.low + b.low, a.high + b.high}); }
constexpr Range operator-(Range a, Range b) { return Wrapped({a.low - b.high, a.high - b.low}); }
constexpr Range operator*(Range a, Range b) {
  const auto [low, high] =
      std::minmax({a.low * b.low, a.low * b.high, a.high * b.low, a.high * b.high});
  return Wrapped({low, high});
}
constexpr Range operator*(std::int64_t factor, Range a) { return a * Range{factor, factor}; }
/// Divided by a positive number, truncated.
constexpr Range operator/(Range a, std::int64_t divisor) {
  return {a.low / divisor, a.high / divisor};
}
/// Whatever the bounds, a clamped value is at least `low`, or `high` where that is less.
constexpr Range Clamped(Range a, std::int64_t low, std::int64_t high) {
  return {std::min(std::max(a.low, low), high), std::min(std::max(a.high, low), high)};
}
constexpr Range Either(Range a, Range b) {
  return {std::min(a.low, b.low), std::max(a.high, b.high)};
}
constexpr Range Magnitude(Range a) {
  const Range negated = {-a.high, -a.low};
  if (a.low >= 0) return a;
  return a.high <= 0 ? Wrapped(negated) : Wrapped({0, std::max(a.high, negated.high)});
}
constexpr bool Contains(Range outer, Range inner) {
  return outer.Contains(inner.low) && outer.Contains(inner.high);
}
constexpr Range Exactly(std::int64_t value) { return {value, value}; }

}  // namespace deimg

#endif  // DEIMG_LINE_RANGE_H

/// Arithmetic that the stages' loops share. Everything here has internal linkage: stages are
/// compiled once per instruction level, and what one level compiled must never be linked into
/// another.
#ifndef DEIMG_LINE_ARITHMETIC_H
#define DEIMG_LINE_ARITHMETIC_H

#include <cstdint>
#include <limits>
#include <type_traits>

#include "line/line.h"

namespace deimg {

template <typename T>
static inline constexpr T Min(T a, T b) {
  return b < a ? b : a;
}

template <typename T>
static inline constexpr T Max(T a, T b) {
  return a < b ? b : a;
}

static inline constexpr Sample Clamp(Sample v, Sample low, Sample high) {
  return Min(Max(v, low), high);
}

/// Clamp(v / 2^shift, low, high) for `low` of 0 or more: below 0 it does not matter how the
/// quotient is rounded, and a shift takes a quarter of the instructions of a division.
static inline constexpr Sample ClampedQuotient(Sample v, int shift, Sample low, Sample high) {
  return Clamp(v >> shift, low, high);
}

/// The magnitude, no wider than the sample.
template <typename T>
static inline constexpr T Abs(T v) {
  return static_cast<T>(v < 0 ? -v : v);
}

/// A column's number beside its index, as wide as a sample: what depends on its parity needs no
/// lanes as wide as an index.
template <typename T>
using ColumnOf = std::make_unsigned_t<T>;

/// `odd` in odd columns, `even` in even ones. Written with a mask, because compilers do not
/// vectorise every choice by a column's parity.
template <typename T>
static inline T ByParity(ColumnOf<T> column, T even, T odd) {
  const auto oddMask = static_cast<T>(-static_cast<T>(column & 1));
  return static_cast<T>(even ^ ((even ^ odd) & oddMask));
}

/// `negative` where v is below 0, else `other`. A mask, where compilers cannot choose between lanes
/// of one width by a comparison of another.
static inline Sample BySign(Sample v, Sample negative, Sample other) {
  return other ^ ((other ^ negative) & (v >> 31));
}

/// The lowest value of a sample of type T.
template <typename T>
static constexpr T kLowest = std::numeric_limits<T>::min();

/// The nearest value that a sample of type T can have.
template <typename T>
static inline T Nearest(Sample v) {
  constexpr Sample kHighest = std::numeric_limits<T>::max();
  return static_cast<T>(Clamp(v, kLowest<T>, kHighest));
}

}  // namespace deimg

#endif  // DEIMG_LINE_ARITHMETIC_H

/// Arithmetic that the kernels share. Everything here has internal linkage: kernels are compiled
/// once per instruction level, and what one level compiled must never be linked into another.
#ifndef DEIMG_GRAPH_KERNEL_MATH_H
#define DEIMG_GRAPH_KERNEL_MATH_H

#include <cstdint>

#include "graph/line.h"

namespace deimg {

static inline constexpr Sample Min(Sample a, Sample b) { return b < a ? b : a; }
static inline constexpr Sample Max(Sample a, Sample b) { return a < b ? b : a; }
static inline constexpr Sample Clamp(Sample v, Sample low, Sample high) {
  return Min(Max(v, low), high);
}
/// Clamp(v / 2^shift, low, high) for `low` of 0 or more: below 0 it does not matter how the
/// quotient is rounded, and a shift takes a quarter of the instructions of a division.
static inline constexpr Sample ClampedQuotient(Sample v, int shift, Sample low, Sample high) {
  return Clamp(v >> shift, low, high);
}
static inline constexpr Sample Abs(Sample v) { return v < 0 ? -v : v; }

/// `odd` in odd columns, `even` in even ones. Written with a mask, because compilers do not
/// vectorise every choice by a column's parity, nor well in lanes as wide as an index.
static inline Sample ByParity(Index x, Sample even, Sample odd) {
  const Sample oddMask = -static_cast<Sample>(static_cast<std::uint32_t>(x) & 1);
  return even ^ ((even ^ odd) & oddMask);
}

}  // namespace deimg

#endif  // DEIMG_GRAPH_KERNEL_MATH_H

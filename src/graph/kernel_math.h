/// Arithmetic that the kernels share. Everything here has internal linkage: kernels are compiled
/// once per instruction level, and what one level compiled must never be linked into another.
#ifndef DEIMG_GRAPH_KERNEL_MATH_H
#define DEIMG_GRAPH_KERNEL_MATH_H

#include "graph/line.h"

namespace deimg {

static inline constexpr Sample Min(Sample a, Sample b) { return b < a ? b : a; }
static inline constexpr Sample Max(Sample a, Sample b) { return a < b ? b : a; }
static inline constexpr Sample Clamp(Sample v, Sample low, Sample high) {
  return Min(Max(v, low), high);
}
static inline constexpr Sample Abs(Sample v) { return v < 0 ? -v : v; }

}  // namespace deimg

#endif  // DEIMG_GRAPH_KERNEL_MATH_H

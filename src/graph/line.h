/// Lines of samples as the stages see them.
#ifndef DEIMG_GRAPH_LINE_H
#define DEIMG_GRAPH_LINE_H

#include <cstddef>
#include <cstdint>

namespace deimg {

/// Inside the graph every sample is a signed 32-bit integer. Sums and products wrap, divisions
/// truncate toward zero, right shifts are arithmetic.
using Sample = std::int32_t;

/// The mosaic, and what is interpolated from it up to the median, fits in 16 bits whenever the
/// white balance leaves no sample outside 0 to 4095, and narrow lines take half the time.
/// Components and kernels of that part of the graph are templates over T, the type of the mosaic's
/// samples: this one, or Sample where nothing is known.
using NarrowSample = std::int16_t;

/// A line that a kernel reads, and one that it writes. A written line never overlaps another one of
/// the same kernel, so that loops over whole lines can be vectorised.
template <typename T>
using LineOf = const T* __restrict;
template <typename T>
using MutableLineOf = T* __restrict;
using Line = LineOf<Sample>;
using MutableLine = MutableLineOf<Sample>;

/// Columns in kernels: as wide as an address, so that compilers need not care for wrapped columns.
using Index = std::ptrdiff_t;

/// Whether an absolute line number is odd, also above the picture, where numbers are negative.
constexpr bool IsOddLine(int line) { return (line & 1) != 0; }

}  // namespace deimg

#endif  // DEIMG_GRAPH_LINE_H

/// Lines of samples as the stages see them, and the scales and ranges that many stages share.
#ifndef DEIMG_LINE_LINE_H
#define DEIMG_LINE_LINE_H

#include <deimg/deimg.h>

#include <cstddef>
#include <cstdint>

#include "base/level.h"

namespace deimg {

/// Inside the graph every sample is a signed 32-bit integer. Sums and products wrap, divisions
/// truncate toward zero, right shifts are arithmetic.
using Sample = std::int32_t;

/// The mosaic, and what is interpolated from it up to the median, fits in 16 bits whenever the
/// white balance leaves no sample outside 0 to 4095, and narrow lines take half the time. Stages of
/// that part of the graph are templates over T, the type of the mosaic's samples: this one, or
/// Sample where nothing is known.
using NarrowSample = std::int16_t;

/// A line that a loop reads, and one that it writes. A written line never overlaps another one of
/// the same loop, so that loops over whole lines can be vectorised.
template <typename T>
using LineOf = const T* __restrict;
template <typename T>
using MutableLineOf = T* __restrict;
using Line = LineOf<Sample>;
using MutableLine = MutableLineOf<Sample>;

/// Columns in loops: as wide as an address, so that compilers need not care for wrapped columns.
using Index = std::ptrdiff_t;

/// Whether an absolute line number is odd, also above the picture, where numbers are negative.
constexpr bool IsOddLine(int line) { return (line & 1) != 0; }

// Fixed-point scales: the value that stands for a factor of 1.
inline constexpr Sample kGainOne = DEIMG_WB_GAIN_ONE;  // white-balance gains, colour conversions
inline constexpr int kMatrixBits = 11;
inline constexpr Sample kMatrixOne = 1 << kMatrixBits;  // colour matrix
inline constexpr Sample kWeightOne = 256;               // luminance weights
inline constexpr Sample kChromaGainOne = 128;           // gains of colour differences and of detail

// Ranges.
inline constexpr Sample kHighestRaw = 4095;  // 12 bits: raw samples and the mosaic
inline constexpr Sample kHighestLuminance =
    8191;                                      // 13 bits: luminance, and linear red, green, blue
inline constexpr Sample kLowestLinear = -512;  // linear red, green and blue
inline constexpr Sample kHighestLevel = 1023;  // brightness, as curves over it are indexed

}  // namespace deimg

#endif  // DEIMG_LINE_LINE_H

/// Curves of a few straight segments.
#ifndef DEIMG_STAGES_SEGMENT_CURVE_H
#define DEIMG_STAGES_SEGMENT_CURVE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/rounding.h"
#include "line/line.h"

namespace deimg {

/// From each segment's start on, v x slope + offset, in 64ths and rounded down. A segment that
/// starts before an earlier one ends that one, too.
template <std::size_t count>
struct SegmentCurve {
  static constexpr int kFractionBits = 6;
  static constexpr double kFraction = 1 << kFractionBits;

  struct Segment {
    Sample start;
    double slope;  // in 64ths, whole numbers
    double offset;
  };

  SegmentCurve() = default;
  /// Values outside `lowest` to `highest` are clipped.
  SegmentCurve(const Segment (&segments)[count], Sample lowestValue, Sample highestValue)
      : lowest(lowestValue), highest(highestValue) {
    for (std::size_t i = 0; i < count; ++i) {
      start[i] = std::clamp(segments[i].start, 0, INT16_MAX);
      slope[i] = Truncated(kFraction * segments[i].slope);
      offset[i] = Truncated(kFraction * segments[i].offset);
    }
  }

  /// Whether 16 bits suffice to compute this table's entries.
  template <std::size_t size>
  bool Matches(const std::array<Sample, size>& table) const {
    for (Sample v = 0; v < static_cast<Sample>(size); ++v) {
      std::size_t i = 0;
      for (std::size_t k = 1; k < count; ++k) {
        if (v >= start[k]) i = k;
      }
      const auto sum = static_cast<std::int16_t>(v * slope[i] + offset[i]);
      if (std::min(std::max(sum >> kFractionBits, lowest), highest) !=
          table[static_cast<std::size_t>(v)])
        return false;
    }
    return true;
  }

  Sample start[count] = {};
  Sample slope[count] = {};
  Sample offset[count] = {};
  Sample lowest = 0;
  Sample highest = 0;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_SEGMENT_CURVE_H

/// Curves of a few straight segments, applied to lines.
#ifndef DEIMG_STAGES_SEGMENT_CURVE_INL_H
#define DEIMG_STAGES_SEGMENT_CURVE_INL_H

#include <array>

#include "line/lanes-inl.h"
#include "line/look_up.h"
#include "line/range.h"
#include "stages/segment_curve.h"

namespace deimg::DEIMG_LEVEL {

/// The curve at v, which is not negative. Products may wrap where the value does not.
template <std::size_t count, typename T, int n>
DEIMG_INLINE static Lanes<T, n> CurveAt(const SegmentCurve<count>& curve, Lanes<T, n> v) {
  const auto all = [](Sample value) { return Lanes<T, n>::All(static_cast<T>(value)); };
  auto slope = all(curve.slope[0]), offset = all(curve.offset[0]);
  for (std::size_t i = 1; i < count; ++i) {
    const auto before = v < all(curve.start[i]);
    slope = Select(before, slope, all(curve.slope[i]));
    offset = Select(before, offset, all(curve.offset[i]));
  }
  const auto value = (v * slope + offset) >> SegmentCurve<count>::kFractionBits;
  return Clamp(value, curve.lowest, curve.highest);
}

/// A curve over 0 to size - 1: computed wherever its segments suffice for that, else looked up.
template <typename T, std::size_t count, std::size_t size>
class GainCurve {
 public:
  void Set(const std::array<Sample, size>& values, const SegmentCurve<count>& segments) {
    segments_ = segments;
    computed_ = sizeof(T) == sizeof(NarrowSample) && segments.Matches(values);
    range_ = Exactly(values[0]);
    for (std::size_t i = 0; i < size; ++i) {
      table_[i] = static_cast<T>(values[i]);
      range_ = Either(range_, Exactly(values[i]));
    }
  }

  Range range() const { return range_; }

  void GainLine(LineOf<T> v, int width, MutableLineOf<T> gain) const {
    if (!computed_) return LookUpLine(table_.data(), v, width, gain);
    const SegmentCurve<count> segments = segments_;
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      Store(gain + x, CurveAt(segments, Load<n>(v + x)));
    });
  }

 private:
  SegmentCurve<count> segments_;
  std::array<T, size> table_{};
  Range range_ = Exactly(0);
  bool computed_ = false;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_SEGMENT_CURVE_INL_H

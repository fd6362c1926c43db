/// The curve of apc_curve.h, as the aperture corrections apply it to their lines.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_INL_H
#define DEIMG_STAGES_LUMA_APC_CURVE_INL_H

#include <cstdint>

#include "line/lanes-inl.h"
#include "stages/luma/apc_curve.h"

namespace deimg::DEIMG_LEVEL {

/// The curve at an index, 0 to its last.
template <bool overflows>
static inline Sample ApcMagnitude(const ApcSegments& curve, Sample i) {
  const bool first = i < curve.knee1;
  const bool third = i >= curve.knee2;
  const Sample slope = third ? curve.slope[2] : first ? curve.slope[0] : curve.slope[1];
  const Sample offset = third ? curve.offset[2] : first ? curve.offset[0] : curve.offset[1];
  const Sample value = i * slope + offset;
  return overflows ? Max<Sample>(static_cast<std::int16_t>(value / 2048), 0) : Max(value, 0) >> 11;
}

/// Maps the magnitude of a sample through the curve and keeps the sign of its quotient. Computing
/// the segments costs half of looking them up in a table of 32 KB.
template <bool overflows>
static inline Sample ApcCurve(const ApcSegments& curve, Sample sample) {
  // The smallest integer has no positive counterpart; the one above it is clamped like it.
  const Sample v = Max(sample, -2147483647);
  const Sample magnitude = ApcMagnitude<overflows>(curve, Min(Abs(v) >> curve.shift, curve.last));
  const Sample leastNegative = -(1 << curve.shift);  // whose quotient is not zero
  return v <= leastNegative ? -magnitude : magnitude;
}

/// The same for narrow quotients, where 16 bits suffice (see ApcSegments::isNarrow): the slopes
/// without the factors that the division takes away again.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> ApcCurve(const ApcSegments& curve, Lanes<T, n> quotient) {
  const auto all = [](Sample value) { return Lanes<T, n>::All(static_cast<T>(value)); };
  const auto knee = [&](Sample i) { return all(Clamp(i, 0, INT16_MAX)); };  // beyond every index
  // Narrowing clips to 16 bits, and the least of those has no positive counterpart.
  const auto i = Min(Abs(Max(quotient, all(-curve.last))), all(curve.last));
  const auto first = i < knee(curve.knee1);
  const auto slope = Select(first, all(curve.slope[0] / 512), all(curve.slope[1] / 512));
  const auto offset = Select(first, all(curve.offset[0] / 512), all(curve.offset[1] / 512));
  const auto low = (i * slope + offset) >> 2;
  const auto high = ProductHigh(i, all(curve.slope[2] * 32)) + all(curve.offset[2] / 2048);
  const auto magnitude = Max(Select(i < knee(curve.knee2), low, high), all(0));
  return Select(quotient < all(0), all(0) - magnitude, magnitude);
}

/// out[x] = curve(detail(x) / 2^shift), the quotient truncated, for the columns from `first` to
/// before `end`; detail<n>(x) are n lanes of 32 bits. The curve divides by a power of two anyway,
/// and dividing magnitudes twice is dividing them once.
template <typename T, typename Detail>
static inline void ApcCurveColumns(const ApcSegments& segments, int shift, Index first, Index end,
                                   Detail detail, MutableLineOf<T> out) {
  ApcSegments curve = segments;
  curve.shift += shift;
  if constexpr (sizeof(T) == sizeof(NarrowSample)) {
    ForColumns<T>(first, end, [=]<int n>(LaneCount<n>, Index x) {
      constexpr int kHalf = Sums<T, n>::kHalf;
      const auto quotient = [&](Index column) {
        return QuotientBy(detail.template operator()<kHalf>(column), curve.shift);
      };
      Store(out + x, ApcCurve(curve, NarrowedInOrder<T, n>(quotient(x), quotient(x + n - kHalf))));
    });
  } else if (curve.overflows) {
    for (Index x = first; x < end; ++x) {
      out[x] = ApcCurve<true>(curve, detail.template operator()<1>(x).v);
    }
  } else {
    for (Index x = first; x < end; ++x) {
      out[x] = ApcCurve<false>(curve, detail.template operator()<1>(x).v);
    }
  }
}

/// The same for sums of lanes.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> ApcCurveOf(const ApcSegments& segments, int shift,
                                           Sums<T, n> detail) {
  ApcSegments curve = segments;
  curve.shift += shift;
  if constexpr (sizeof(T) == sizeof(NarrowSample)) {
    const auto quotient = [&](auto half) { return QuotientBy(half, curve.shift); };
    return ApcCurve(curve, Narrowed(Sums<T, n>{quotient(detail.low), quotient(detail.high)}));
  } else {
    return {curve.overflows ? ApcCurve<true>(curve, detail.low.v)
                            : ApcCurve<false>(curve, detail.low.v)};
  }
}

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_INL_H

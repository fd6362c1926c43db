/// The curve of apc_curve.h, as the aperture corrections apply it to their lines.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_INL_H
#define DEIMG_STAGES_LUMA_APC_CURVE_INL_H

#include <cstdint>

#include "line/arithmetic.h"
#include "stages/luma/apc_curve.h"

namespace deimg::DEIMG_LEVEL {

/// Maps the magnitude of a sample through the curve and keeps the sign of its quotient. Computing
/// the segments costs half of looking them up in a table of 32 KB.
template <bool overflows>
static inline Sample ApcCurve(const ApcSegments& curve, Sample sample) {
  // The smallest integer has no positive counterpart; the one above it is clamped like it.
  const Sample v = Max(sample, -2147483647);
  const Sample i = Min(Abs(v) >> curve.shift, curve.last);
  const bool first = i < curve.knee1;
  const bool third = i >= curve.knee2;
  const Sample slope = third ? curve.slope[2] : first ? curve.slope[0] : curve.slope[1];
  const Sample offset = third ? curve.offset[2] : first ? curve.offset[0] : curve.offset[1];
  const Sample value = i * slope + offset;
  const Sample magnitude =
      overflows ? Max<Sample>(static_cast<std::int16_t>(value / 2048), 0) : Max(value, 0) >> 11;
  const Sample leastNegative = -(1 << curve.shift);  // whose quotient is not zero
  return v <= leastNegative ? -magnitude : magnitude;
}

/// out[x] = curve(detail(x) / 2^shift), the quotient truncated, for the columns from `first` to
/// before `end`. The curve divides by a power of two anyway, and dividing magnitudes twice is
/// dividing them once.
template <typename Detail>
static inline void ApcCurveColumns(const ApcSegments& segments, int shift, Index first, Index end,
                                   Detail detail, MutableLine out) {
  ApcSegments curve = segments;
  curve.shift += shift;
  if (curve.overflows) {
    for (Index x = first; x < end; ++x) out[x] = ApcCurve<true>(curve, detail(x));
  } else {
    for (Index x = first; x < end; ++x) out[x] = ApcCurve<false>(curve, detail(x));
  }
}

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_INL_H

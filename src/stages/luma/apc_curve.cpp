#include "stages/luma/apc_curve.h"

#include <algorithm>

namespace deimg {
namespace {

/// Slopes in eighths.
Sample SlopeOf(std::int16_t code) {
  constexpr Sample kSlopes[] = {3, 4, 5, 0, 6, 8, 10, 12, 14, 16, 20, 24};
  return code >= 0 && code < 12 ? kSlopes[code] : 0;
}

bool FitsIn16Bits(Sample value) { return static_cast<std::int16_t>(value) == value; }

}  // namespace

ApcSegments MakeApcCurve(const ApcCurveParams& params, int size, int shift) {
  // With slope s in eighths, the first two segments are (i x s / 32 + offset) x 8, the third
  // (i x s / 16384 + offset) x 8.
  ApcSegments curve{
      .shift = shift,
      .knee1 = params.knee1 * 4,
      .knee2 = params.knee2 * 4,
      .last = size - 1,
      .slope = {512 * SlopeOf(params.slopeCode[0]), 512 * SlopeOf(params.slopeCode[1]),
                SlopeOf(params.slopeCode[2])},
      .offset = {params.offset[0] * 16384, params.offset[1] * 16384, params.offset[2] * 16384},
      .overflows = false,
      .isNarrow = false,
      .values = Exactly(0)};
  for (int i = 0; i < 3; ++i) {
    const Sample lowest = curve.offset[i] / 2048;
    const Sample highest = (curve.last * curve.slope[i] + curve.offset[i]) / 2048;
    curve.overflows = curve.overflows || !FitsIn16Bits(lowest) || !FitsIn16Bits(highest);
  }
  // The first two segments in units of 512, from where they start to where they end.
  const auto needed = [&](int i, Sample first, Sample end) {
    const Range steps = {std::max(first, 0), std::min(end, curve.last + 1) - 1};
    if (steps.low > steps.high) return Exactly(0);
    return (curve.slope[i] / 512) * steps + Exactly(curve.offset[i] / 512);
  };
  const Range low =
      Either(needed(0, 0, std::min(curve.knee1, curve.knee2)), needed(1, curve.knee1, curve.knee2));
  const Range high = curve.slope[2] * Range{0, curve.last} / 2048 + Exactly(curve.offset[2] / 2048);
  curve.isNarrow = !curve.overflows && low.FitsIn<std::int16_t>() && high.FitsIn<std::int16_t>();
  // Beside them, and where they overflow, an entry can be anything that has 16 bits.
  const std::int64_t most =
      curve.overflows ? INT16_MAX : std::max<std::int64_t>({low.high / 4, high.high, 0});
  curve.values = {-most, most};
  return curve;
}

}  // namespace deimg

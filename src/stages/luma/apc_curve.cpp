#include "stages/luma/apc_curve.h"

namespace deimg {
namespace {

/// Slopes in eighths.
Sample SlopeOf(std::int16_t code) {
  constexpr Sample kSlopes[] = {3, 4, 5, 0, 6, 8, 10, 12, 14, 16, 20, 24};
  return code >= 0 && code < 12 ? kSlopes[code] : 0;
}

}  // namespace

ApcSegments MakeApcCurve(const ApcCurveParams& params, int size) {
  // With slope s in eighths, the first two segments are (i x s / 32 + offset) x 8, the third
  // (i x s / 16384 + offset) x 8.
  return {.knee1 = params[0] * 4,
          .knee2 = params[1] * 4,
          .last = size - 1,
          .slope = {SlopeOf(params[2]), SlopeOf(params[3]), SlopeOf(params[4])},
          .offset = {params[5] * 32, params[6] * 32, params[7] * 16384}};
}

}  // namespace deimg

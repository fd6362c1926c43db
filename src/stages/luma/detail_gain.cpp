#include "stages/luma/detail_gain.h"

#include <algorithm>

#include "base/rounding.h"

namespace deimg {
namespace {

/// The scale of negative detail, kGainOne = 1.0; below 0 for modes that do not exist.
Sample NegativeScale(std::int16_t modeA, std::int16_t modeB) {
  constexpr Sample kScales[3][4] = {{0, 128, 256, -1}, {64, 192, 320, 576}, {512, 640, 768, -1}};
  if (modeB < 0 || modeB > 3) return -1;
  return kScales[modeA == 0 || modeA == 1 ? modeA : 2][modeB];
}

}  // namespace

Result MakeDetailGain(const DetailGainTuning& tuning, std::size_t isoClass, DetailGain& gain) {
  constexpr Sample kRise[] = {0, 64, 32, 16};
  constexpr Sample kFall[] = {0, 16, 8, 4};
  constexpr Sample kEnd[] = {1024, 800, 832, 864, 896, 928, 960, 992};
  if (tuning.riseCode > 3 || tuning.fallCode > 3 || tuning.endCode > 7) return DEIMG_UNSUPPORTED;
  const Sample peak = 16 * tuning.peak[isoClass];
  // Bounds outside the levels have the effect of the nearest one.
  const auto level = [](Sample bound) { return std::clamp(bound, 0, kHighestLevel + 1); };
  gain.rise = kRise[tuning.riseCode];
  gain.riseEnd = gain.rise != 0 ? level(peak / gain.rise) : 0;
  gain.hold = Low16(peak);
  gain.fall = kFall[tuning.fallCode];
  gain.end = kEnd[tuning.endCode];
  // Where the fall starts is rounded toward zero: up, where a high peak puts it below zero.
  gain.holdEnd = gain.fall != 0 ? level((gain.end * gain.fall - peak) / gain.fall) : kHighestLevel;
  gain.negativeScale = NegativeScale(tuning.negativeModeA, tuning.negativeModeB);
  return gain.negativeScale < 0 ? Result{DEIMG_UNSUPPORTED} : Result{DEIMG_OK};
}

}  // namespace deimg

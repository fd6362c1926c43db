#include "stages/colour/suppression_curve.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "base/rounding.h"

namespace deimg {
namespace {

constexpr Sample kFull = kChromaGainOne;

struct DarkRamp {
  double slope;
  double offset;
};

std::optional<DarkRamp> DarkRampOf(std::uint16_t code) {
  constexpr DarkRamp kRamps[] = {{0, 128}, {4, 64}, {4, 0}, {8, 0}};
  if (code >= std::size(kRamps)) return std::nullopt;
  return kRamps[code];
}

/// The first falling slope; the second one is four times as steep.
std::optional<double> SlopeOf(std::uint16_t code) {
  struct Slope {
    std::uint16_t code;
    double slope;
  };
  constexpr Slope kSlopes[] = {{0, 0.0},      {1, -0.0625}, {2, -0.03125},
                               {4, -0.125},   {5, -0.1875}, {6, -0.15625},
                               {7, -0.09375}, {8, -0.25},   {11, -0.21875}};
  for (const Slope& candidate : kSlopes) {
    if (candidate.code == code) return candidate.slope;
  }
  return std::nullopt;
}

}  // namespace

Result BuildSuppressionCurve(const ChromaSuppression& p, Sample* table,
                             SuppressionSegments& segments) {
  const auto dark = DarkRampOf(p.darkCode);
  const auto slope2Code = SlopeOf(p.slope2Code);
  const auto slope3Code = SlopeOf(p.slope3Code);
  if (!dark || !slope2Code || !slope3Code) return DEIMG_UNSUPPORTED;
  const double slope2 = *slope2Code;
  const double slope3 = 4 * *slope3Code;

  const int x1 = dark->slope != 0 ? Truncated((128 - dark->offset) / dark->slope) : 0;
  const int x2 = Low16((p.kneeCode * 16) | (p.kneeBase == 1 ? 0 : 512));
  const double y2 = p.kneeGain;
  const double intercept2 = y2 - x2 * slope2;
  const double intercept3 = y2 - x2 * slope3;
  const int xk = slope2 != 0 ? Truncated((128 - intercept2) / slope2) : 0;
  const int x3 = p.knee2Level;
  const int y3 = Truncated(x3 * slope3 + intercept3);
  const double slope4 = -(p.tailSlope / 8.0);
  const double intercept4 = y3 - x3 * slope4;

  // Later ranges overwrite earlier ones; each is cut to the table.
  const auto fill = [table](int first, int last, auto value) {
    for (int i = std::max(first, 0); i <= std::min<int>(last, kHighestLevel); ++i) {
      table[i] = value(i);
    }
  };
  fill(0, x1, [&](int i) { return std::min(kFull, Truncated(i * dark->slope + dark->offset)); });
  fill(x1 + 1, xk, [](int) { return kFull; });
  fill(xk + 1, x2, [&](int i) { return std::min(kFull, Truncated(i * slope2 + intercept2)); });
  fill(x2 + 1, x3, [&](int i) { return std::max(0, Truncated(i * slope3 + intercept3)); });
  fill(x3 + 1, kHighestLevel,
       [&](int i) { return std::max(0, Truncated(i * slope4 + intercept4)); });
  segments = {{{0, dark->slope, dark->offset},
               {x1 + 1, 0, kFull},
               {xk + 1, slope2, intercept2},
               {x2 + 1, slope3, intercept3},
               {x3 + 1, slope4, intercept4}},
              0,
              kFull};
  return DEIMG_OK;
}

}  // namespace deimg

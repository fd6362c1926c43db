#include "rawfile/tone_curves.h"

#include <algorithm>
#include <cmath>

#include "rawfile/bytes.h"

namespace deimg::rawfile {
namespace {

constexpr int kStep = 4;       // inputs per unit of a segment's start
constexpr int kBaseUnit = 32;  // output per unit of a segment's base
constexpr int kWhiteBase = 255;
constexpr int kFixedStarts[] = {1008, 1920, 3312};

/// One segment from (start, base of `first`) to (end, base of `last`) through the tone's value half
/// way. Of the possible scales the finest whose coefficients fit is taken.
template <typename Segment>
Segment FitSegment(const std::function<double(int)>& value, int start, int end, int first,
                   int last) {
  const double width = end - start;
  const double half = value(start + (end - start) / 2) - kBaseUnit * first;
  const double full = kBaseUnit * (last - first);
  const double quadratic = (2 * full - 4 * half) / (width * width);
  Segment segment{};
  segment.base = static_cast<int16_t>(first);
  for (int shift = 5; shift >= 0; --shift) {
    const double scale = 64.0 * (1 << shift);
    // With the quadratic coefficient as rounded, the linear one meets the end point.
    const double q = std::round(quadratic * scale * 512);
    const double l = std::round((full * scale - q * width * width / 512) / width);
    if (std::abs(l) > 32767 || std::abs(q) > 32767 || std::abs(q) * width * width > 2e9) continue;
    segment.linear = static_cast<int16_t>(l);
    segment.quadratic = static_cast<int16_t>(q);
    segment.quarter = shift >= 4 ? 1 : 0;
    segment.shift = static_cast<int16_t>(shift >= 4 ? shift - 2 : shift);
    return segment;
  }
  throw WriteError("a tone curve is too steep");
}

/// The segments from 0 on, knee and highlight: the part both kinds of curve have in common.
template <typename Curve>
Curve Fit(const std::function<double(double)>& tone, int white, int knee) {
  Curve curve{};
  curve.knee = static_cast<int16_t>(knee);
  curve.highlight = static_cast<int16_t>(white / kStep);
  const auto value = [&](int input) {
    return kWhiteBase * kBaseUnit * tone(static_cast<double>(input) / white);
  };
  const int starts[] = {0, kStep * knee, kFixedStarts[0], kFixedStarts[1], kFixedStarts[2], white};
  const auto base = [&](int input) { return static_cast<int>(std::round(value(input) / 32)); };
  for (size_t i = 0; i < 5; ++i) {
    using Segment = typename decltype(curve.segments)::value_type;
    curve.segments[i] =
        FitSegment<Segment>(value, starts[i], starts[i + 1], base(starts[i]), base(starts[i + 1]));
  }
  curve.last.base = kWhiteBase;
  return curve;
}

}  // namespace

LuminanceToneTuning FitLuminanceCurve(const std::function<double(double)>& tone, int white) {
  return Fit<LuminanceToneTuning>(tone, white, 40);
}

RgbToneTuning FitRgbCurve(const std::function<double(double)>& tone, int white) {
  RgbToneTuning curve = Fit<RgbToneTuning>(tone, white, 28);
  // Slightly negative colours, beyond the strongest a screen shows, stay negative: -64 becomes
  // -1024.
  curve.floor = -16;
  curve.negative.base = -32;
  curve.negative.linear = 1024;
  return curve;
}

}  // namespace deimg::rawfile

#include "rawfile/tone_curves.h"

#include <algorithm>
#include <cmath>

namespace deimg::rawfile {
namespace {

constexpr int kStep = 4;       // inputs per unit of a segment's start
constexpr int kBaseUnit = 32;  // output per unit of a segment's base
constexpr int kWhiteBase = 255;
constexpr int kFixedStarts[] = {1008, 1920, 3312};

/// How far a segment's value is shifted right.
int ShiftOf(const ToneSegment& s) {
  return (s.quarter == 1 ? 2 : 0) + (s.shift >= 1 && s.shift <= 3 ? s.shift : 0);
}

/// One segment from (start, base of `first`) to (end, base of `last`) through the tone's value half
/// way. Of the possible scales the finest whose coefficients fit is taken.
ToneSegment FitSegment(const std::function<double(int)>& value, int start, int end, int first,
                       int last) {
  const double width = end - start;
  const double half = value(start + (end - start) / 2) - kBaseUnit * first;
  const double full = kBaseUnit * (last - first);
  const double quadratic = (2 * full - 4 * half) / (width * width);
  ToneSegment segment;
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

}  // namespace

int Evaluate(const LuminanceCurve& curve, int input) {
  const int starts[] = {0,
                        kStep * curve.knee,
                        kFixedStarts[0],
                        kFixedStarts[1],
                        kFixedStarts[2],
                        kStep * curve.highlight};
  size_t i = 0;
  while (i < 4 && input >= starts[i + 1]) ++i;
  if (i == 4 && input >= starts[5]) i = 5;
  const ToneSegment& s = curve.segments[i];
  const int d = input - starts[i];
  const int value = ((s.quadratic * d * d / 512 + s.linear * d) >> 6) >> ShiftOf(s);
  return std::clamp(value + kBaseUnit * s.base, 0, kToneMaximum);
}

int Evaluate(const RgbCurve& curve, int input) {
  const int v = std::max(input, kStep * curve.floor);
  const int starts[] = {kStep * curve.floor,    0,
                        kStep * curve.knee,     kFixedStarts[0],
                        kFixedStarts[1],        kFixedStarts[2],
                        kStep * curve.highlight};
  size_t i = v < 0 ? 0 : 1;
  while (v >= 0 && i < 5 && v >= starts[i + 1]) ++i;
  if (i == 5 && v >= starts[6]) i = 6;
  const ToneSegment& s = curve.segments[i];
  const int d = v - starts[i];
  const int q = d * (s.quadratic * d) / (s.mode == 1 ? 256 : 512) + s.linear * d;
  const int value = ((q / 64) >> ShiftOf(s)) + kBaseUnit * s.base;
  return v < 0 && value >= 1 ? 0 : static_cast<int16_t>(value);
}

namespace {

/// The segments from 0 on, knee and highlight: the part both kinds of curve have in common.
template <typename Curve>
Curve Fit(const std::function<double(double)>& tone, int white, int knee, size_t firstSegment) {
  Curve curve;
  curve.knee = static_cast<int16_t>(knee);
  curve.highlight = static_cast<int16_t>(white / kStep);
  const auto value = [&](int input) {
    return kWhiteBase * kBaseUnit * tone(static_cast<double>(input) / white);
  };
  const int starts[] = {0, kStep * knee, kFixedStarts[0], kFixedStarts[1], kFixedStarts[2], white};
  const auto base = [&](int input) { return static_cast<int>(std::round(value(input) / 32)); };
  for (size_t i = 0; i < 5; ++i) {
    curve.segments[firstSegment + i] =
        FitSegment(value, starts[i], starts[i + 1], base(starts[i]), base(starts[i + 1]));
  }
  curve.segments[firstSegment + 5].base = kWhiteBase;
  return curve;
}

}  // namespace

LuminanceCurve FitLuminanceCurve(const std::function<double(double)>& tone, int white) {
  return Fit<LuminanceCurve>(tone, white, 40, 0);
}

RgbCurve FitRgbCurve(const std::function<double(double)>& tone, int white) {
  RgbCurve curve = Fit<RgbCurve>(tone, white, 28, 1);
  // Slightly negative colours, beyond the strongest a screen shows, stay negative: -64 becomes
  // -1024.
  curve.floor = -16;
  curve.segments[0].base = -32;
  curve.segments[0].linear = 1024;
  return curve;
}

}  // namespace deimg::rawfile

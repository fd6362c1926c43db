/// The tone curves of luminance and of red, green and blue: quadratic segments over fixed and
/// recorded starts.
#ifndef DEIMG_STAGES_TONE_CURVES_H
#define DEIMG_STAGES_TONE_CURVES_H

#include <algorithm>
#include <cstddef>

#include "base/rounding.h"
#include "line/line.h"
#include "props/tuning_block.h"

namespace deimg {

namespace tone {

/// One of the six segments from 0 on, and where it starts.
struct Place {
  std::size_t segment;
  Sample start;
};

/// The segment of an input. Ends are tested in order: where a recorded start lies below the one
/// before it, the segment between is empty.
template <typename Curve>
Place PlaceOf(const Curve& curve, Sample input) {
  const Sample starts[] = {0, 4 * curve.knee, 1008, 1920, 3312, 4 * curve.highlight};
  std::size_t i = 0;
  while (i < 5 && input >= starts[i + 1]) ++i;
  return {i, starts[i]};
}

/// The segment's quadratic at a distance from its start, times 64.
template <typename Segment>
Sample Quadratic(const Segment& segment, Sample d, Sample divisor = 512) {
  return segment.quadratic * d * d / divisor + segment.linear * d;
}

/// The value shifted as the segment says, on top of its base.
template <typename Segment>
Sample OnBase(const Segment& segment, Sample value) {
  if (segment.quarter == 1) value >>= 2;
  if (segment.shift >= 1 && segment.shift <= 3) value >>= segment.shift;
  return value + 32 * segment.base;
}

/// An RGB segment's value; its 64ths are cut toward zero.
template <typename Segment>
Sample RgbValue(const Segment& segment, Sample mode, Sample d) {
  return OnBase(segment, Quadratic(segment, d, mode == 1 ? 256 : 512) / 64);
}

}  // namespace tone

/// The luminance tone curve at `input`, 0 to 8191.
inline Sample LuminanceToneCurve(Sample input, const LuminanceToneTuning& curve) {
  const auto [i, start] = tone::PlaceOf(curve, input);
  const ToneSegment& segment = i < 5 ? curve.segments[i] : curve.last;
  const Sample value = tone::Quadratic(segment, input - start) >> 6;
  return std::clamp(tone::OnBase(segment, value), 0, kHighestLuminance);
}

/// The tone curve of red, green and blue at `input`; a signed 16-bit value. Inputs below the
/// curve's floor count as the floor, and negative inputs yield nothing positive.
inline Sample RgbToneCurve(Sample input, const RgbToneTuning& curve) {
  const Sample floor = 4 * curve.floor;
  const Sample v = std::max(input, floor);
  if (v < 0) {
    const Sample value = tone::RgbValue(curve.negative, curve.negative.mode, v - floor);
    return value >= 1 ? 0 : Signed16(value);
  }
  const auto [i, start] = tone::PlaceOf(curve, v);
  if (i == 5) return Signed16(tone::RgbValue(curve.last, curve.lastMode, v - start));
  return Signed16(tone::RgbValue(curve.segments[i], curve.segments[i].mode, v - start));
}

/// Entries of a table of RgbToneCurve() over its inputs, kLowestLinear first.
inline constexpr int kRgbToneTableSize = kHighestLuminance - kLowestLinear + 1;

}  // namespace deimg

#endif  // DEIMG_STAGES_TONE_CURVES_H

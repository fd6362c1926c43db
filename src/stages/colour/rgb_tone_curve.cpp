#include "stages/colour/rgb_tone_curve.h"

#include <algorithm>

#include "graph/rounding.h"

namespace deimg {
namespace {

using Record = TuningBlock::Words<45>;

/// One quadratic segment; positions are in input units divided by 4, the base in output units
/// divided by 32.
struct Segment {
  Sample start;
  Sample base;
  Sample linear;
  Sample quadratic;
  Sample mode;
  Sample shift;
  Sample quarter;
};

/// A segment whose base, coefficients, mode, shift and quarter flag follow each other.
Segment SegmentAt(const Record& r, Sample start, std::size_t base) {
  return {start, r[base], r[base + 1], r[base + 2], r[base + 3], r[base + 4], r[base + 5]};
}

Segment ChooseSegment(Sample v, const Record& r) {
  if (v < 0) return SegmentAt(r, r[0], 1);
  if (v < 4 * r[7]) return SegmentAt(r, 0, 8);
  if (v < 1008) return SegmentAt(r, r[7], 14);
  if (v < 1920) return SegmentAt(r, 252, 20);
  if (v < 3312) return SegmentAt(r, 480, 26);
  if (v < 4 * r[38]) return SegmentAt(r, 828, 32);
  // The last segment keeps its mode at the end of the record.
  return {r[38], r[39], r[40], r[41], r[44], r[42], r[43]};
}

}  // namespace

Sample RgbToneCurve(Sample x, const Record& r) {
  const Sample v = std::max<Sample>(x, 4 * r[0]);
  const Segment segment = ChooseSegment(v, r);
  const Sample d = v - 4 * segment.start;
  const Sample square = d * (segment.quadratic * d);
  Sample s = (square / (segment.mode == 1 ? 256 : 512) + segment.linear * d) / 64;
  if (segment.quarter == 1) s >>= 2;
  if (segment.shift >= 1 && segment.shift <= 3) s >>= segment.shift;
  const Sample out = s + 32 * segment.base;
  return v < 0 && out >= 1 ? 0 : Signed16(out);
}

void BuildRgbToneTable(const Record& record, std::int16_t* table) {
  for (int i = 0; i < kRgbToneTableSize; ++i) {
    table[i] = static_cast<std::int16_t>(RgbToneCurve(i + kLowestLinear, record));
  }
}

}  // namespace deimg

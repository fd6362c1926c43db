#include "stages/colour/chroma_gain_curve.h"

#include <algorithm>

#include "base/rounding.h"

namespace deimg {
namespace {

constexpr int kLast = kChromaGainTableSize - 1;

}  // namespace

ChromaGainSegments BuildChromaGainTable(const std::array<std::int16_t, 7>& f, Sample* table) {
  const double s1 = -(f[3] / 16.0);
  const double c1 = f[1] - f[2] * s1;
  const int x0 = f[3] == 0 ? 0 : std::max(Truncated((f[0] - c1) / s1), 0);
  const double s2 = -(f[4] / 16.0);
  const double c2 = f[1] - f[2] * s2;
  const double s3 = f[6] / 64.0 + s2;
  const double c3 = Truncated(f[5] * s2 + c2) - f[5] * s3;

  const auto fill = [table](int first, int last, auto value) {
    for (int i = std::max(first, 0); i <= std::min(last, kLast); ++i) table[i] = value(i);
  };
  const int ramp = std::min(x0, kChromaGainTableSize);
  fill(0, ramp, [&](int) { return Sample{f[0]}; });
  fill(ramp + 1, f[2], [&](int i) { return Truncated(i * s1 + c1); });
  fill(f[2] + 1, f[5], [&](int i) { return Truncated(i * s2 + c2); });
  fill(f[5] + 1, kLast, [&](int i) { return Truncated(i * s3 + c3); });
  return {{{0, 0, static_cast<double>(f[0])},
           {ramp + 1, s1, c1},
           {f[2] + 1, s2, c2},
           {f[5] + 1, s3, c3}},
          INT16_MIN,
          INT16_MAX};
}

}  // namespace deimg

/// Kernels of the stage in chroma_suppress.h.
#ifndef DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_KERNELS_H
#define DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

static constexpr Sample kHighestSuppressionLevel = 1023;

/// Brightness levels, 0 to 1023, from red, blue and the low-passed luminance; column 0 gets 0.
template <typename T>
static void SuppressionLevelLine(LineOf<T> r, LineOf<T> b, Line luminance, int width,
                                 MutableLineOf<NarrowSample> level) {
  const auto at = [&](Index x, Sample rRight, Sample bRight) {
    const Sample sum =
        r[x - 1] + 2 * r[x] + rRight + luminance[x] + 2 * (b[x - 1] + 2 * b[x] + bRight);
    return static_cast<NarrowSample>(ClampedQuotient(sum, 8, 32, kHighestSuppressionLevel + 32) -
                                     32);
  };
  level[0] = 0;
  for (Index x = 1; x < width - 1; ++x) level[x] = at(x, r[x + 1], b[x + 1]);
  level[width - 1] = at(width - 1, r[width - 1], b[width - 1]);  // the last sample repeats
}

/// The largest level within three columns on either side; the two columns before the last keep
/// their own level.
static void LargestLevelLine(LineOf<NarrowSample> level, int width,
                             MutableLineOf<NarrowSample> largest) {
  largest[0] = 0;
  // Levels are never negative, so columns before the line may simply be left out.
  largest[1] = Max(Max(level[1], level[2]), Max(level[3], level[4]));
  largest[2] = Max(largest[1], level[5]);
  for (Index x = 3; x < width - 3; ++x) {
    largest[x] = Max(Max(Max(level[x - 3], level[x - 2]), Max(level[x - 1], level[x])),
                     Max(Max(level[x + 1], level[x + 2]), level[x + 3]));
  }
  for (Index x = width - 3; x < width; ++x) largest[x] = level[x];
}

/// Applies the curve's values and a gain (128 = 1.0 each); the first and the last column become 0.
static void SuppressLine(Line in, Line curve, Sample gain, int width, MutableLine out) {
  for (Index x = 0; x < width; ++x) out[x] = in[x] * curve[x] * gain / 16384;
  out[0] = out[width - 1] = 0;
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_KERNELS_H

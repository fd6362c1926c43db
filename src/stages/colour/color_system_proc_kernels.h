/// Kernels of the stage in color_system_proc.h.
#ifndef DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_KERNELS_H
#define DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"
#include "stages/colour/rgb_tone_range.h"

namespace deimg {

static constexpr Sample kLowestChroma = -4096;
static constexpr Sample kHighestChroma = 4095;
static constexpr int kUnsmoothed = 4;  // columns on each side

/// Low-pass along the line: (4, 7, 18, 21, 28, 21, 18, 7, 4) / 128, (3, 8, 13, 16, 13, 8, 3) / 64,
/// or none. The second one takes the outer taps from the inner ones, which saves a multiplication.
static inline Sample Smoothed9(Line in, Index x) {
  return (28 * in[x] + 21 * (in[x - 1] + in[x + 1]) + 18 * (in[x - 2] + in[x + 2]) +
          7 * (in[x - 3] + in[x + 3]) + 4 * (in[x - 4] + in[x + 4])) /
         128;
}

static inline Sample Smoothed7(Line in, Index x) {
  const Sample one = in[x - 1] + in[x + 1];
  const Sample two = in[x - 2] + in[x + 2];
  const Sample three = in[x - 3] + in[x + 3];
  return (16 * (in[x] + one) + 8 * two + 3 * (three - one)) / 64;
}

static inline Sample Unsmoothed(Line in, Index x) { return in[x]; }

template <Sample (*smoothed)(Line, Index)>
static inline void ToRgbColumns(Line luminance, Line c1, Line c2, const Sample* black, Index first,
                                Index end, MutableLine r, MutableLine g, MutableLine b) {
  const Sample blackR = 4 * black[0], blackG = 4 * black[1], blackB = 4 * black[2];
  for (Index x = first; x < end; ++x) {
    const Sample y = smoothed(luminance, x);
    const Sample red = y + smoothed(c1, x);
    const Sample blue = y + smoothed(c2, x);
    const Sample green = (1024 * y - 307 * red - 113 * blue) / 604;
    r[x] = Clamp(red - blackR, kLowestLinear, kHighestLinear);
    g[x] = Clamp(green - blackG, kLowestLinear, kHighestLinear);
    b[x] = Clamp(blue - blackB, kLowestLinear, kHighestLinear);
  }
}

template <Sample (*smoothed)(Line, Index)>
static inline void ToRgbLine(Line luminance, Line c1, Line c2, const Sample* black, int width,
                             MutableLine r, MutableLine g, MutableLine b) {
  const int left = Min(kUnsmoothed, width);
  const int right = Max(left, width - kUnsmoothed);
  ToRgbColumns<Unsmoothed>(luminance, c1, c2, black, 0, left, r, g, b);
  ToRgbColumns<smoothed>(luminance, c1, c2, black, left, right, r, g, b);
  ToRgbColumns<Unsmoothed>(luminance, c1, c2, black, right, width, r, g, b);
}

/// Luminance and two colour differences, smoothed, to red, green and blue without their black
/// offsets (in quarters), clipped to the tone curve's range. The four outer columns on each side
/// are not smoothed.
static void ToRgbLine9(Line luminance, Line c1, Line c2, const Sample* black, int width,
                       MutableLine r, MutableLine g, MutableLine b) {
  ToRgbLine<Smoothed9>(luminance, c1, c2, black, width, r, g, b);
}

static void ToRgbLine7(Line luminance, Line c1, Line c2, const Sample* black, int width,
                       MutableLine r, MutableLine g, MutableLine b) {
  ToRgbLine<Smoothed7>(luminance, c1, c2, black, width, r, g, b);
}

/// In place: r keeps red, g becomes Cr and b becomes Cb.
static void ToColourDifferencesLine(Line r, int width, MutableLine gToCr, MutableLine bToCb) {
  for (Index x = 0; x < width; ++x) {
    const Sample g = gToCr[x];
    const Sample b = bToCb[x];
    const Sample cr = (512 * r[x] - 429 * g - 83 * b) / 1024;
    const Sample cb = 8 * (-172 * r[x] - 340 * g + 512 * b) / 8192;
    gToCr[x] = Clamp(cr, kLowestChroma, kHighestChroma);
    bToCb[x] = Clamp(cb, kLowestChroma, kHighestChroma);
  }
}

/// Level of the chroma gain, 0 to 128.
static void ChromaLevelLine(Line cr, Line cb, int width, MutableLine level) {
  for (Index x = 0; x < width; ++x) level[x] = Max(Abs(cr[x]), Abs(cb[x])) >> 5;
}

/// In place: applies a gain (128 = 1.0) and adds a share of each colour difference to the other, by
/// the other's sign. `mix` holds the colour offsets h0 to h3.
static void AdjustColourDifferencesLine(Line gain, const std::int16_t* mix, int width,
                                        MutableLine cr, MutableLine cb) {
  const Sample shareOfCr = 8 * mix[2], shareOfNegativeCr = shareOfCr + 8 * mix[0];
  const Sample shareOfCb = 8 * mix[3], shareOfNegativeCb = shareOfCb + 8 * mix[1];
  for (Index x = 0; x < width; ++x) {
    const Sample red = cr[x] * gain[x] / 128;
    const Sample blue = cb[x] * gain[x] / 128;
    cr[x] = red + (blue < 0 ? shareOfNegativeCb : shareOfCb) * blue / 1024;
    cb[x] = blue + (red < 0 ? shareOfNegativeCr : shareOfCr) * red / 1024;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_KERNELS_H

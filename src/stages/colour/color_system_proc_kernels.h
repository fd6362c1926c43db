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

static void CopyEnds(Line in, int width, MutableLine out) {
  for (Index x = 0; x < Min(kUnsmoothed, width); ++x) {
    out[x] = in[x];
    out[width - 1 - x] = in[width - 1 - x];
  }
}

/// Low-pass along the line with nine or seven taps; the four outer columns on each side are copied.
static void SmoothLine9(Line in, int width, MutableLine out) {
  CopyEnds(in, width, out);
  for (Index x = kUnsmoothed; x < width - kUnsmoothed; ++x) {
    out[x] = (28 * in[x] + 21 * (in[x - 1] + in[x + 1]) + 18 * (in[x - 2] + in[x + 2]) +
              7 * (in[x - 3] + in[x + 3]) + 4 * (in[x - 4] + in[x + 4])) /
             128;
  }
}

static void SmoothLine7(Line in, int width, MutableLine out) {
  CopyEnds(in, width, out);
  for (Index x = kUnsmoothed; x < width - kUnsmoothed; ++x) {
    out[x] = (16 * in[x] + 13 * (in[x - 1] + in[x + 1]) + 8 * (in[x - 2] + in[x + 2]) +
              3 * (in[x - 3] + in[x + 3])) /
             64;
  }
}

/// In place: luminance and two colour differences to red, green and blue without their black
/// offsets (in quarters), clipped to the tone curve's range.
static void ToRgbLine(const Sample* black, int width, MutableLine yToR, MutableLine c1ToG,
                      MutableLine c2ToB) {
  const Sample blackR = 4 * black[0], blackG = 4 * black[1], blackB = 4 * black[2];
  for (Index x = 0; x < width; ++x) {
    const Sample y = yToR[x];
    const Sample r = y + c1ToG[x];
    const Sample b = y + c2ToB[x];
    const Sample g = (1024 * y - 307 * r - 113 * b) / 604;
    yToR[x] = Clamp(r - blackR, kLowestLinear, kHighestLinear);
    c1ToG[x] = Clamp(g - blackG, kLowestLinear, kHighestLinear);
    c2ToB[x] = Clamp(b - blackB, kLowestLinear, kHighestLinear);
  }
}

static void RgbToneLine(const Sample* table, int width, MutableLine line) {
  for (Index x = 0; x < width; ++x) line[x] = table[line[x] - kLowestLinear];
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

/// In place: gain by the larger of both magnitudes.
static void ChromaGainLine(const Sample* table, int width, MutableLine cr, MutableLine cb) {
  for (Index x = 0; x < width; ++x) {
    const Sample gain = table[Max(Abs(cr[x]), Abs(cb[x])) / 32];
    cr[x] = cr[x] * gain / 128;
    cb[x] = cb[x] * gain / 128;
  }
}

/// In place: adds a share of each colour difference to the other, by the other's sign. `mix` holds
/// the colour offsets h0 to h3.
static void HueMixLine(const std::int16_t* mix, int width, MutableLine cr, MutableLine cb) {
  const Sample h0 = 8 * mix[0], h1 = 8 * mix[1], h2 = 8 * mix[2], h3 = 8 * mix[3];
  for (Index x = 0; x < width; ++x) {
    const Sample red = cr[x];
    const Sample blue = cb[x];
    cr[x] = red + ((blue < 0 ? h1 : 0) + h3) * blue / 1024;
    cb[x] = blue + ((red < 0 ? h0 : 0) + h2) * red / 1024;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_KERNELS_H

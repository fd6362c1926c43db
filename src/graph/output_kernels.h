/// Kernels of the last stage in last_stage_rgb.h.
#ifndef DEIMG_GRAPH_OUTPUT_KERNELS_H
#define DEIMG_GRAPH_OUTPUT_KERNELS_H

#include <cstdint>

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

static inline std::uint8_t To8Bits(Sample v) {
  return static_cast<std::uint8_t>(ClampedQuotient(v, 15, 0, 255));
}

static inline std::uint16_t To16Bits(Sample v) {
  return static_cast<std::uint16_t>(Clamp(v / 128 + 7, 0, 65535));
}

/// Luminance (13 bits) and colour differences to red, green and blue, with 1024 = 1.0.
template <typename T, T (*toOutput)(Sample)>
static inline void RgbPlanes(Line y, Line cr, Line cb, int width, MutableLineOf<T> r,
                             MutableLineOf<T> g, MutableLineOf<T> b) {
  for (Index x = 0; x < width; ++x) {
    const Sample a = y[x] * 1024;
    r[x] = toOutput(a + 1436 * cr[x]);
    g[x] = toOutput(a - 352 * cb[x] - 731 * cr[x]);
    b[x] = toOutput(a + 1814 * cb[x] - cr[x]);
  }
}

template <typename T>
static inline void InterleaveLine(LineOf<T> r, LineOf<T> g, LineOf<T> b, int width,
                                  MutableLineOf<T> rgb) {
  for (Index x = 0; x < width; ++x) {
    rgb[3 * x] = r[x];
    rgb[3 * x + 1] = g[x];
    rgb[3 * x + 2] = b[x];
  }
}

/// One line of `width` pixels to interleaved red, green and blue. `planes` has room for as many
/// samples: narrow planes first and interleaving them afterwards takes two thirds of the time of
/// interleaving 32-bit samples.
static void RgbLine8(Line y, Line cr, Line cb, int width, std::uint8_t* planes, std::uint8_t* rgb) {
  RgbPlanes<std::uint8_t, To8Bits>(y, cr, cb, width, planes, planes + width, planes + 2 * width);
  InterleaveLine(planes, planes + width, planes + 2 * width, width, rgb);
}

static void RgbLine16(Line y, Line cr, Line cb, int width, std::uint16_t* planes,
                      std::uint16_t* rgb) {
  RgbPlanes<std::uint16_t, To16Bits>(y, cr, cb, width, planes, planes + width, planes + 2 * width);
  InterleaveLine(planes, planes + width, planes + 2 * width, width, rgb);
}

}  // namespace deimg

#endif  // DEIMG_GRAPH_OUTPUT_KERNELS_H

/// Kernels of the source in source_stream_reader.h and the last stage in last_stage_rgb.h.
#ifndef DEIMG_GRAPH_OUTPUT_KERNELS_H
#define DEIMG_GRAPH_OUTPUT_KERNELS_H

#include <cstdint>

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Widens a line of unsigned 16-bit little-endian samples.
static void WidenLine(const std::uint8_t* bytes, int width, MutableLine out) {
  for (Index x = 0; x < width; ++x) out[x] = bytes[2 * x] | bytes[2 * x + 1] << 8;
}

/// One line of `width` pixels: luminance y (13 bits) and colour differences to interleaved RGB,
/// with 1024 = 1.0. The divisor brings them to the output range.
template <Sample divisor, Sample offset, Sample highest>
static void RgbLine(Line y, Line cr, Line cb, int width, MutableLine rgb) {
  for (Index x = 0; x < width; ++x) {
    const Sample a = y[x] * 1024;
    const Sample r = (a + 1436 * cr[x]) / divisor + offset;
    const Sample g = (a - 352 * cb[x] - 731 * cr[x]) / divisor + offset;
    const Sample b = (a + 1814 * cb[x] - cr[x]) / divisor + offset;
    rgb[3 * x] = Clamp(r, 0, highest);
    rgb[3 * x + 1] = Clamp(g, 0, highest);
    rgb[3 * x + 2] = Clamp(b, 0, highest);
  }
}

static void RgbLine8(Line y, Line cr, Line cb, int width, MutableLine rgb) {
  RgbLine<32768, 0, 255>(y, cr, cb, width, rgb);
}

static void RgbLine16(Line y, Line cr, Line cb, int width, MutableLine rgb) {
  RgbLine<128, 7, 65535>(y, cr, cb, width, rgb);
}

/// The low 8 bits, or the low 16 bits little-endian, of each sample.
static void PackLine8(Line samples, int count, std::uint8_t* bytes) {
  for (Index i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(samples[i]);
}

static void PackLine16(Line samples, int count, std::uint8_t* bytes) {
  for (Index i = 0; i < count; ++i) {
    bytes[2 * i] = static_cast<std::uint8_t>(samples[i]);
    bytes[2 * i + 1] = static_cast<std::uint8_t>(samples[i] >> 8);
  }
}

}  // namespace deimg

#endif  // DEIMG_GRAPH_OUTPUT_KERNELS_H

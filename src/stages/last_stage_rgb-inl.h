/// The graph's last component: red, green and blue lines for the host.
///
/// Inputs: the colour differences Cr and Cb; the 13-bit luminance. Output: kRgb, R, G and B of
/// every pixel of the plane's line, interleaved and clipped to the output range: one byte a sample,
/// or two in little-endian order.
#ifndef DEIMG_STAGES_LAST_STAGE_RGB_INL_H
#define DEIMG_STAGES_LAST_STAGE_RGB_INL_H

#include <cstdint>

#include "base/byte_order.h"
#include "stages/colour/color_system_proc-inl.h"
#include "stages/luma/ymain_procs-inl.h"
#include "storage/stream_calls.h"

namespace deimg::DEIMG_LEVEL {

class LastStageRgb final : public Stage {
 public:
  enum Port { kRgb };

  /// `sampleBytes` is 1 or 2: 8-bit or 16-bit output.
  LastStageRgb(const StageContext& context, int sampleBytes, ColorSystemProc& chroma,
               YMainProcs& luminance)
      : Stage(InfoOf(TypeId::kLastStageRgb), {3 * context.size().width, context.size().height},
              {&chroma, &luminance}, 1, sampleBytes),
        geometry_(context.geometry),
        cr_(*this, chroma, ColorSystemProc::kCr),
        cb_(*this, chroma, ColorSystemProc::kCb),
        luminance_(*this, luminance, YMainProcs::kLuminance) {}

  /// Hands the part of the current line that lies inside the image area to the output's Write.
  [[nodiscard]] Result Deliver(CallerStream& output) {
    // An image area that starts at this column is delivered from one column further left.
    constexpr int kShiftedLeft = 12;
    const int left = geometry_.areaLeft == kShiftedLeft ? kShiftedLeft - 1 : geometry_.areaLeft;
    const int pixelBytes = 3 * sampleBytes();
    return Write(output, GetLine<std::uint8_t>(0, kRgb) + left * pixelBytes,
                 static_cast<std::uint32_t>(geometry_.areaWidth * pixelBytes));
  }

 private:
  void ComputeLine(int o) override {
    for (const Samples& samples : kSamples) {
      if (samples.bytes != sampleBytes()) continue;
      samples.line(luminance_[o], cr_[o], cb_[o], width() / 3, Scratch<std::uint8_t>(0), rgb_[o]);
    }
  }

  static std::uint8_t To8Bits(Sample v) {
    return static_cast<std::uint8_t>(ClampedQuotient(v, 15, 0, 255));
  }
  static std::uint16_t To16Bits(Sample v) {
    return static_cast<std::uint16_t>(Clamp(v / 128 + 7, 0, 65535));
  }

  /// One line of `width` pixels. `planes` has room for as many: narrow planes first and
  /// interleaving them afterwards takes two thirds of the time of interleaving 32-bit samples.
  template <typename T, T (*toOutput)(Sample)>
  static void RgbLine(Line y, Line cr, Line cb, int width, void* planes, void* rgb) {
    T* const r = static_cast<T*>(planes);
    T* const out = static_cast<T*>(rgb);
    SplitLine<T, toOutput>(y, cr, cb, width, r, r + width, r + 2 * width);
    InterleaveLine<T>(r, r + width, r + 2 * width, width, out);
    if constexpr (sizeof(T) == 2) ToLittleEndian(out, 3 * static_cast<std::size_t>(width));
  }

  template <typename T, T (*toOutput)(Sample)>
  static void SplitLine(Line y, Line cr, Line cb, int width, MutableLineOf<T> r, MutableLineOf<T> g,
                        MutableLineOf<T> b) {
    for (Index x = 0; x < width; ++x) {
      const Sample a = y[x] * kGainOne;
      r[x] = toOutput(a + 1436 * cr[x]);
      g[x] = toOutput(a - 352 * cb[x] - 731 * cr[x]);
      b[x] = toOutput(a + 1814 * cb[x] - cr[x]);
    }
  }

  template <typename T>
  static void InterleaveLine(LineOf<T> r, LineOf<T> g, LineOf<T> b, int width,
                             MutableLineOf<T> rgb) {
    for (Index x = 0; x < width; ++x) {
      rgb[3 * x] = r[x];
      rgb[3 * x + 1] = g[x];
      rgb[3 * x + 2] = b[x];
    }
  }

  /// The formats of the output's samples.
  struct Samples {
    int bytes;
    void (*line)(Line y, Line cr, Line cb, int width, void* planes, void* rgb);
  };
  static constexpr Samples kSamples[] = {{1, RgbLine<std::uint8_t, To8Bits>},
                                         {2, RgbLine<std::uint16_t, To16Bits>}};

  const ImageGeometry& geometry_;
  const Input<Sample> cr_;
  const Input<Sample> cb_;
  const Input<Sample> luminance_;
  const Output<std::uint8_t> rgb_{*this, kRgb};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LAST_STAGE_RGB_INL_H

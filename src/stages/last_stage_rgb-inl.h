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

template <typename T>
class LastStageRgb final : public Stage {
 public:
  enum Port { kRgb };

  /// `sampleBytes` is 1 or 2: 8-bit or 16-bit output.
  LastStageRgb(const StageContext& context, int sampleBytes, ColorSystemProc<T>& chroma,
               YMainProcs<T>& luminance)
      : Stage(InfoOf(TypeId::kLastStageRgb), {3 * context.size().width, context.size().height},
              {&chroma, &luminance}, 1, sampleBytes),
        geometry_(context.geometry),
        cr_(*this, chroma, ColorSystemProc<T>::kCr),
        cb_(*this, chroma, ColorSystemProc<T>::kCb),
        luminance_(*this, luminance, YMainProcs<T>::kLuminance) {
    Declare(kRgb, sampleBytes, kAnything);
  }

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

  /// One line of `width` pixels. `planes` has room for as many: narrow planes first and
  /// interleaving them afterwards takes two thirds of the time of interleaving 32-bit samples.
  template <typename Value>
  static void RgbLine(const T* y, const T* cr, const T* cb, int width, void* planes, void* rgb) {
    Value* const r = static_cast<Value*>(planes);
    Value* const out = static_cast<Value*>(rgb);
    SplitLine(y, cr, cb, width, r, r + width, r + 2 * width);
    InterleaveLine<Value>(r, r + width, r + 2 * width, width, out);
    if constexpr (sizeof(Value) == 2) ToLittleEndian(out, 3 * static_cast<std::size_t>(width));
  }

  template <typename Value>
  static void SplitLine(LineOf<T> y, LineOf<T> cr, LineOf<T> cb, int width, MutableLineOf<Value> r,
                        MutableLineOf<Value> g, MutableLineOf<Value> b) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto a = Widened(Load<n>(y + x)) << 10;  // kGainOne = 1.0
      const auto red = Load<n>(cr + x), blue = Load<n>(cb + x);
      StoreValues(r + x, a + DotPairs(red, 1436, blue, 0));
      StoreValues(g + x, a + DotPairs(red, -731, blue, -352));
      StoreValues(b + x, a + DotPairs(red, -1, blue, 1814));
    });
  }
  template <int n>
  DEIMG_INLINE static void StoreValues(std::uint8_t* out, Sums<T, n> v) {
    StoreBytes(out, Narrowed(v >> 15));
  }
  /// v / 128 + 7, clipped to 0 to 65535.
  template <int n>
  DEIMG_INLINE static void StoreValues(std::uint16_t* out, Sums<T, n> v) {
    StoreUnsigned(out, Quotient<7>(v) + v.All(7));
  }

  template <typename Value>
  static void InterleaveLine(LineOf<Value> r, LineOf<Value> g, LineOf<Value> b, int width,
                             MutableLineOf<Value> rgb) {
    for (Index x = 0; x < width; ++x) {
      rgb[3 * x] = r[x];
      rgb[3 * x + 1] = g[x];
      rgb[3 * x + 2] = b[x];
    }
  }

  /// The formats of the output's samples.
  struct Samples {
    int bytes;
    void (*line)(const T* y, const T* cr, const T* cb, int width, void* planes, void* rgb);
  };
  static constexpr Samples kSamples[] = {{1, RgbLine<std::uint8_t>}, {2, RgbLine<std::uint16_t>}};

  const ImageGeometry& geometry_;
  const Input<T> cr_;
  const Input<T> cb_;
  const Input<T> luminance_;
  const Output<std::uint8_t> rgb_{*this, kRgb};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LAST_STAGE_RGB_INL_H

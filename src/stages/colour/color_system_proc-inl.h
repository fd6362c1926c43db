/// Last stage of the colour path: smoothing, tone curve, chroma gain and hue.
///
/// Smooths luminance and colour differences along the line, turns them into red, green and blue,
/// removes black offsets, applies the tone curve, and returns to a pair of colour differences,
/// whose strength and hue it adjusts.
///
/// Inputs: the suppressed colour differences; the matrix's luminance. Output: kCr and kCb, -4096 to
/// 4095 before the adjustments; kRed is working storage.
#ifndef DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_INL_H
#define DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_INL_H

#include "stages/colour/chroma_gain_curve.h"
#include "stages/colour/chroma_suppress-inl.h"
#include "stages/tone_curves.h"

namespace deimg::DEIMG_LEVEL {

class ColorSystemProc final : public Stage {
 public:
  enum Port { kRed, kCr, kCb };

  template <typename T>
  ColorSystemProc(const StageContext& context, ChromaSuppress<T>& chroma, Matrix4x3<T>& matrix)
      : Stage(InfoOf(TypeId::kColorSystemProc), context.size(), {&chroma, &matrix}, 1),
        context_(context),
        first_(*this, chroma, ChromaSuppress<T>::kFirstDifference),
        second_(*this, chroma, ChromaSuppress<T>::kSecondDifference),
        luminance_(*this, matrix, Matrix4x3<T>::kLuminance) {}

  /// 3 without memory for the tables, 96 for a tone level that does not exist.
  [[nodiscard]] Result Prepare() override {
    if (!context_.settings.fullProcessing()) return DEIMG_OK;
    rgbToneTable_ = BlockOf<std::int16_t>::Zeroed(kRgbToneTableSize);
    if (!rgbToneTable_) return DEIMG_OUT_OF_MEMORY;
    const auto toneIndex = context_.settings.toneIndex;
    if (!toneIndex) return DEIMG_UNSUPPORTED;
    const auto& curve = context_.tuning.rgbTone[*toneIndex][context_.settings.isoClass];
    for (int i = 0; i < kRgbToneTableSize; ++i) {
      rgbToneTable_.get()[i] = static_cast<std::int16_t>(RgbToneCurve(i + kLowestLinear, curve));
    }
    chromaGainTable_ = BlockOf<Sample>::Zeroed(kChromaGainTableSize);
    if (!chromaGainTable_) return DEIMG_OUT_OF_MEMORY;
    BuildChromaGainTable(context_.tables.colourGains, chromaGainTable_.get());
    return DEIMG_OK;
  }

 private:
  static constexpr int kUnsmoothed = 4;  // columns on each side

  void ComputeLine(int o) override {
    Sample* const r = red_[o];
    Sample* const cr = cr_[o];  // green at first
    Sample* const cb = cb_[o];  // blue at first
    const auto toRgbLine =
        context_.tuning.smoothSelect == 0 ? ToRgbLine<Smoothed9> : ToRgbLine<Smoothed7>;
    toRgbLine(luminance_[o], first_[o], second_[o], context_.tuning, width(), r, cr, cb);
    const bool full = context_.settings.fullProcessing();
    if (full) {
      for (Sample* const l : {r, cr, cb})
        LookUpLine(rgbToneTable_.get() - kLowestLinear, width(), l);
    }
    ToDifferencesLine(r, width(), cr, cb);
    if (!full) return;
    Sample* const gain = Scratch(0);
    ChromaLevelLine(cr, cb, width(), gain);
    LookUpLine(chromaGainTable_.get(), width(), gain);
    AdjustLine(gain, context_.tables.colourOffsets.data(), width(), cr, cb);
  }

  /// Low-pass along the line: (4, 7, 18, 21, 28, 21, 18, 7, 4) / 128, (3, 8, 13, 16, 13, 8, 3) /
  /// 64, or none. The second one takes the outer taps from the inner ones, which saves a product.
  static Sample Smoothed9(Line in, Index x) {
    return (28 * in[x] + 21 * (in[x - 1] + in[x + 1]) + 18 * (in[x - 2] + in[x + 2]) +
            7 * (in[x - 3] + in[x + 3]) + 4 * (in[x - 4] + in[x + 4])) /
           128;
  }
  static Sample Smoothed7(Line in, Index x) {
    const Sample one = in[x - 1] + in[x + 1], two = in[x - 2] + in[x + 2];
    const Sample three = in[x - 3] + in[x + 3];
    return (16 * (in[x] + one) + 8 * two + 3 * (three - one)) / 64;
  }
  static Sample Unsmoothed(Line in, Index x) { return in[x]; }

  /// Smoothed red, green and blue without their black offsets, clipped to the tone curve's range.
  template <Sample (*smoothed)(Line, Index)>
  static void ToRgbLine(Line luminance, Line c1, Line c2, const TuningBlock& t, int width,
                        MutableLine r, MutableLine g, MutableLine b) {
    const int left = Min(kUnsmoothed, width);
    const int right = Max(left, width - kUnsmoothed);
    ToRgbColumns<Unsmoothed>(luminance, c1, c2, t, 0, left, r, g, b);
    ToRgbColumns<smoothed>(luminance, c1, c2, t, left, right, r, g, b);
    ToRgbColumns<Unsmoothed>(luminance, c1, c2, t, right, width, r, g, b);
  }
  template <Sample (*smoothed)(Line, Index)>
  static void ToRgbColumns(Line luminance, Line c1, Line c2, const TuningBlock& t, Index first,
                           Index end, MutableLine r, MutableLine g, MutableLine b) {
    const Sample blackR = 4 * t.blackR, blackG = 4 * t.blackG, blackB = 4 * t.blackB;
    for (Index x = first; x < end; ++x) {
      const Sample y = smoothed(luminance, x);
      const Sample red = y + smoothed(c1, x);
      const Sample blue = y + smoothed(c2, x);
      const Sample green = (1024 * y - 307 * red - 113 * blue) / 604;
      r[x] = Clamp(red - blackR, kLowestLinear, kHighestLuminance);
      g[x] = Clamp(green - blackG, kLowestLinear, kHighestLuminance);
      b[x] = Clamp(blue - blackB, kLowestLinear, kHighestLuminance);
    }
  }

  /// In place: r keeps red, g becomes Cr and b becomes Cb.
  static void ToDifferencesLine(Line r, int width, MutableLine gToCr, MutableLine bToCb) {
    for (Index x = 0; x < width; ++x) {
      const Sample g = gToCr[x], b = bToCb[x];
      gToCr[x] = Clamp((512 * r[x] - 429 * g - 83 * b) / 1024, -4096, 4095);
      bToCb[x] = Clamp(8 * (-172 * r[x] - 340 * g + 512 * b) / 8192, -4096, 4095);
    }
  }

  /// Index of the chroma gain, 0 to 128.
  static void ChromaLevelLine(Line cr, Line cb, int width, MutableLine level) {
    for (Index x = 0; x < width; ++x) level[x] = Max(Abs(cr[x]), Abs(cb[x])) >> 5;
  }

  /// In place: applies the gain and adds a share of each colour difference to the other, by the
  /// other's sign. `mix` holds the colour offsets h0 to h3.
  static void AdjustLine(Line gain, const std::int16_t* mix, int width, MutableLine cr,
                         MutableLine cb) {
    const Sample shareOfCr = 8 * mix[2], shareOfNegativeCr = shareOfCr + 8 * mix[0];
    const Sample shareOfCb = 8 * mix[3], shareOfNegativeCb = shareOfCb + 8 * mix[1];
    for (Index x = 0; x < width; ++x) {
      const Sample red = cr[x] * gain[x] / kChromaGainOne;
      const Sample blue = cb[x] * gain[x] / kChromaGainOne;
      cr[x] = red + (blue < 0 ? shareOfNegativeCb : shareOfCb) * blue / 1024;
      cb[x] = blue + (red < 0 ? shareOfNegativeCr : shareOfCr) * red / 1024;
    }
  }

  const StageContext& context_;
  const Input<Sample> first_;
  const Input<Sample> second_;
  const Input<Sample> luminance_;
  const Output<Sample> red_{*this, kRed};
  const Output<Sample> cr_{*this, kCr};
  const Output<Sample> cb_{*this, kCb};
  BlockOf<std::int16_t> rgbToneTable_;
  BlockOf<Sample> chromaGainTable_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_INL_H

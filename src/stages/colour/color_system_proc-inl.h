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

#include "stages/colour/chroma_adjustment-inl.h"
#include "stages/colour/chroma_suppress-inl.h"
#include "stages/colour/smoothing-inl.h"
#include "stages/tone_curves.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class ColorSystemProc final : public Stage {
 public:
  enum Port { kRed, kCr, kCb };

  ColorSystemProc(const StageContext& context, ChromaSuppress<T>& chroma, Matrix4x3<T>& matrix)
      : Stage(InfoOf(TypeId::kColorSystemProc), context.size(), {&chroma, &matrix}, 4),
        context_(context),
        full_(context.settings.fullProcessing()),
        adjustment_(context.tables),
        first_(*this, chroma, ChromaSuppress<T>::kFirstDifference),
        second_(*this, chroma, ChromaSuppress<T>::kSecondDifference),
        luminance_(*this, matrix, Matrix4x3<T>::kLuminance),
        red_(*this, kRed, full_ ? kToneRange : kLinearRange),
        cr_(*this, kCr, full_ ? adjustment_.CrRange() : kDifferenceRange),
        cb_(*this, kCb, full_ ? adjustment_.CbRange() : kDifferenceRange) {
    const Range y = luminance_.range(), c1 = first_.range(), c2 = second_.range();
    const Range green = (604 * y - 307 * c1 - 113 * c2) / 604;
    for (const Range in : {y, c1, c2}) this->template Needs<T>(in + in);
    this->template Needs<T>(y + c1 - Exactly(4 * context.tuning.blackR));
    this->template Needs<T>(green - Exactly(4 * context.tuning.blackG));
    this->template Needs<T>(y + c2 - Exactly(4 * context.tuning.blackB));
    for (const Range sum : {y + c1, green, y + c2}) this->template Needs<T>(sum);
    this->template NeedsNarrow<T>(!full_ || adjustment_.isNarrow());
  }

  /// 3 without memory for the tone curve, 96 for a tone level that does not exist.
  [[nodiscard]] Result Prepare() override {
    if (!full_) return DEIMG_OK;
    toneTable_ = BlockOf<T>::Zeroed(kRgbToneTableSize);
    if (!toneTable_) return DEIMG_OUT_OF_MEMORY;
    const auto toneIndex = context_.settings.toneIndex;
    if (!toneIndex) return DEIMG_UNSUPPORTED;
    const auto& curve = context_.tuning.rgbTone[*toneIndex][context_.settings.isoClass];
    for (int i = 0; i < kRgbToneTableSize; ++i) {
      toneTable_.get()[i] = static_cast<T>(RgbToneCurve(i + kLowestLinear, curve));
    }
    return DEIMG_OK;
  }

 private:
  static constexpr Range kLinearRange = {kLowestLinear, kHighestLuminance};
  static constexpr Range kToneRange = {INT16_MIN, INT16_MAX};

  void ComputeLine(int o) override {
    T* const r = red_[o];
    T* const g = Scratch<T>(0);
    T* const b = Scratch<T>(1);
    const auto toRgbLine =
        context_.tuning.smoothSelect == 0 ? ToRgbLine<Smoothed9> : ToRgbLine<Smoothed7>;
    toRgbLine(luminance_[o], first_[o], second_[o], context_.tuning, width(), r, g, b);
    if (!full_) return ToDifferencesLine(r, g, b, width(), cr_[o], cb_[o]);
    for (T* const l : {r, g, b}) LookUpLine(toneTable_.get() - kLowestLinear, l, width(), l);
    T* const cr = Scratch<T>(2);
    T* const cb = Scratch<T>(3);
    ToDifferencesLine(r, g, b, width(), cr, cb);
    // Green and blue have served.
    adjustment_.Apply(cr, cb, width(), g, b, cr_[o], cb_[o]);
  }

  /// Smoothed red, green and blue without their black offsets, clipped to the tone curve's range.
  template <typename Smoothed>
  static void ToRgbLine(LineOf<T> luminance, LineOf<T> c1, LineOf<T> c2, const TuningBlock& t,
                        int width, MutableLineOf<T> r, MutableLineOf<T> g, MutableLineOf<T> b) {
    const int left = Min(Smoothed::kUnsmoothed, width);
    const int right = Max(left, width - Smoothed::kUnsmoothed);
    ToRgbColumns<Unsmoothed>(luminance, c1, c2, t, 0, left, r, g, b);
    ToRgbColumns<Smoothed>(luminance, c1, c2, t, left, right, r, g, b);
    ToRgbColumns<Unsmoothed>(luminance, c1, c2, t, right, width, r, g, b);
  }
  template <typename Smoothed>
  static void ToRgbColumns(LineOf<T> luminance, LineOf<T> c1, LineOf<T> c2, const TuningBlock& t,
                           Index first, Index end, MutableLineOf<T> r, MutableLineOf<T> g,
                           MutableLineOf<T> b) {
    const Sample blackR = 4 * t.blackR, blackG = 4 * t.blackG, blackB = 4 * t.blackB;
    const auto linear = [](auto v, Sample black) {
      return Clamp(v - v.All(static_cast<T>(black)), kLowestLinear, kHighestLuminance);
    };
    ForColumns<T>(first, end, [=]<int n>(LaneCount<n>, Index x) {
      const auto y = Smoothed::template At<n>(luminance + x);
      const auto red = Smoothed::template At<n>(c1 + x);  // both less the luminance
      const auto blue = Smoothed::template At<n>(c2 + x);
      // (1024 luminance - 307 red - 113 blue) / 604 with whole red and blue
      const auto sum = DotPairs(y, 604, red, -307) - DotPairs(blue, 113, y, 0);
      Store(r + x, linear(y + red, blackR));
      Store(g + x, linear(Narrowed(sum / 604), blackG));
      Store(b + x, linear(y + blue, blackB));
    });
  }

  static void ToDifferencesLine(LineOf<T> r, LineOf<T> g, LineOf<T> b, int width,
                                MutableLineOf<T> cr, MutableLineOf<T> cb) {
    const auto difference = [](auto sum) {
      return Clamp(Narrowed(Quotient<10>(sum)), kDifferenceRange.low, kDifferenceRange.high);
    };
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto red = Load<n>(r + x), green = Load<n>(g + x), blue = Load<n>(b + x);
      const auto zero = red.All(0);
      Store(cr + x, difference(DotPairs(red, 512, green, -429) + DotPairs(blue, -83, zero, 0)));
      Store(cb + x, difference(DotPairs(red, -172, green, -340) + DotPairs(blue, 512, zero, 0)));
    });
  }

  const StageContext& context_;
  const bool full_;
  const ChromaAdjustment<T> adjustment_;
  const Input<T> first_;
  const Input<T> second_;
  const Input<T> luminance_;
  const Output<T> red_;
  const Output<T> cr_;
  const Output<T> cb_;
  BlockOf<T> toneTable_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_INL_H

/// The final luminance.
///
/// Adds the aperture corrections with a gain that depends on the local brightness, maps the result
/// through the tone curve, and lowers it where the colour differences are strong. Plain processing
/// only scales; quick processing leaves the aperture corrections out.
///
/// Inputs: the luminance mix; the colour differences; the five details. Output: kLuminance, 0 to
/// 8191.
#ifndef DEIMG_STAGES_LUMA_YMAIN_PROCS_INL_H
#define DEIMG_STAGES_LUMA_YMAIN_PROCS_INL_H

#include "stages/colour/color_system_proc-inl.h"
#include "stages/luma/a_apc_procs-inl.h"
#include "stages/luma/detail_gain.h"
#include "stages/luma/h_apc_procs-inl.h"
#include "stages/luma/r_apc_procs-inl.h"
#include "stages/luma/v_apc_procs-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class YMainProcs final : public Stage {
 public:
  enum Port { kLuminance };

  YMainProcs(const StageContext& context, RamenToYmix<T>& mix, ColorSystemProc<T>& chroma,
             HApcProcs<T>& hApc, RApcProcs<T>& rApc, VApcProcs<T>& vApc, AApcProcs<T>& aApc)
      : Stage(InfoOf(TypeId::kYMainProcs), context.size(),
              {&mix, &chroma, &hApc, &rApc, &vApc, &aApc}, 2),
        context_(context),
        gainStatus_(MakeDetailGain(context.details().gain, context.settings.isoClass, gain_)),
        mix_(*this, mix, RamenToYmix<T>::kMixed),
        cr_(*this, chroma, ColorSystemProc<T>::kCr),
        cb_(*this, chroma, ColorSystemProc<T>::kCb),
        hShort_(*this, hApc, HApcProcs<T>::kShort),
        hLong_(*this, hApc, HApcProcs<T>::kLong),
        r_(*this, rApc, RApcProcs<T>::kDetail),
        v_(*this, vApc, VApcProcs<T>::kDetail),
        a_(*this, aApc, AApcProcs<T>::kDetail) {
    if (full() && context.settings.toneIndex) {
      correction_ = CorrectionOf(context.tuning.chromaCorrection[*context.settings.toneIndex]);
    }
    const Range sum = hShort_.range() + hLong_.range() + r_.range() + v_.range() + a_.range();
    this->template Needs<T>(sum);
    this->template Needs<T>(gain_.range());
    const Range cr = cr_.range() - Exactly(correction_.threshold);
    const Range cb = cb_.range() - Exactly(correction_.threshold);
    const Range excess = Exactly(correction_.gainCr) * Clamped(cr, 0, kAnything.high) +
                         Exactly(correction_.gainCb) * Clamped(cb, 0, kAnything.high);
    this->template Needs<T>(Exactly(correction_.threshold));
    this->template Needs<T>(cr);
    this->template Needs<T>(cb);
    this->template Needs<T>(Exactly(correction_.gainCr));
    this->template Needs<T>(Exactly(correction_.gainCb));
    this->template Needs<T>(2 * luminance_.range() - excess / 16 + Exactly(1));
  }

  /// 96 for a code or tone level that does not exist, 3 without memory for the tone curve.
  [[nodiscard]] Result Prepare() override {
    const DevelopSettings& settings = context_.settings;
    DEIMG_RETURN_IF_FAILED(gainStatus_);
    if (!full()) return DEIMG_OK;
    if (!settings.toneIndex) return DEIMG_UNSUPPORTED;
    toneTable_ = BlockOf<T>::Zeroed(kHighestLuminance + 1);
    if (!toneTable_) return DEIMG_OUT_OF_MEMORY;
    const auto& curve = context_.tuning.luminanceTone[*settings.toneIndex][settings.isoClass];
    for (int i = 0; i <= kHighestLuminance; ++i) {
      toneTable_.get()[i] = static_cast<T>(LuminanceToneCurve(i, curve));
    }
    return DEIMG_OK;
  }

 private:
  /// Threshold and gains of the correction by colour difference.
  struct Correction {
    Sample threshold;
    Sample gainCr;
    Sample gainCb;
  };

  static Correction CorrectionOf(const ChromaCorrectionTuning& tuning) {
    // Counts of shifts are taken modulo 32.
    const auto gain = [](Sample factor, int shift) {
      return factor == 0 && shift == 0 ? 0 : (8 * factor + 32) >> ((3 - shift) & 31);
    };
    const Sample gainCr = gain(tuning.redGain, tuning.redShift);
    return {.threshold = static_cast<Sample>(32u << ((tuning.thresholdShift - 1) & 31)),
            .gainCr = tuning.redNegative == 1 ? -gainCr : gainCr,
            .gainCb = gain(tuning.blueGain, tuning.blueShift)};
  }

  bool full() const { return context_.settings.fullProcessing(); }

  void ComputeLine(int o) override {
    if (!full()) return ScaleLine(mix_[o], width(), luminance_[o]);
    T* const y = Scratch<T>(0);
    if (context_.settings.quick()) {
      ScaleLine(mix_[o], width(), y);
    } else {
      T* const level = Scratch<T>(1);
      LevelLine(mix_[o], width(), level);
      AddDetailLine(mix_[o], level, hShort_[o], hLong_[o], r_[o], v_[o], a_[o], gain_, width(), y);
    }
    LookUpLine(toneTable_.get(), y, width(), y);
    CorrectLine(y, cr_[o], cb_[o], correction_, width(), luminance_[o]);
  }

  /// y / 8, clipped.
  static void ScaleLine(Line y, int width, MutableLineOf<T> out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      Store(out + x, Scaled(LoadSums<n, T>(y + x)));
    });
  }
  template <int n>
  DEIMG_INLINE static Lanes<T, n> Scaled(Sums<T, n> y) {
    return Clamp(Narrowed(y >> 3), 0, kHighestLuminance);
  }

  /// The brightness level around each column, 0 to kHighestLevel.
  static void LevelLine(Line y, int width, MutableLineOf<T> level) {
    constexpr auto levelOf = [](auto brightness) { return Clamp(brightness, 0, kHighestLevel); };
    ForColumns<T>(2, width - 3, [=]<int n>(LaneCount<n>, Index x) {
      constexpr int m = Sums<T, n>::kHalf;
      const auto around = [&](Index c) {
        const auto at = [&](Index distance) { return Load<m>(y + c + distance); };
        return (at(-2) + at(2) + ((at(-1) + at(0) + at(1)) << 1)) >> 9;
      };
      Store(level + x, levelOf(NarrowedInOrder<T, n>(around(x), around(x + n - m))));
    });
    for (const int x : {0, 1, width - 3, width - 2, width - 1}) {
      level[x] = levelOf(Lanes<T, 1>{Nearest<T>(y[x] >> 6)}).v;
    }
  }

  /// Adds the details to the luminance, weighted by level, and scales it.
  static void AddDetailLine(Line y, LineOf<T> level, LineOf<T> hShort, LineOf<T> hLong, LineOf<T> r,
                            LineOf<T> v, LineOf<T> a, const DetailGain& gain, int width,
                            MutableLineOf<T> out) {
    const auto rise = static_cast<T>(gain.rise), fall = static_cast<T>(gain.fall);
    const Sample negativeScale = gain.negativeScale;
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      using L = Lanes<T, n>;
      const auto all = [](Sample value) { return L::All(static_cast<T>(value)); };
      const L i = Load<n>(level + x);
      const L falling = Max(all(gain.end) - i, all(0)) * fall;
      const L weight = Select(i < all(gain.riseEnd), i * rise,
                              Select(i < all(gain.holdEnd), all(gain.hold), falling));
      const L sum = Load<n>(hShort + x) + Load<n>(hLong + x) + Load<n>(r + x) + Load<n>(v + x) +
                    Load<n>(a + x);
      const auto detail = Quotient<7>(Products(weight, sum));
      const auto darker = Quotient<10>(detail * negativeScale);
      Store(out + x, Scaled(LoadSums<n, T>(y + x) + BySign(detail, darker, detail)));
    });
  }

  /// Lowers the luminance where a colour difference exceeds the threshold.
  static void CorrectLine(LineOf<T> y, LineOf<T> cr, LineOf<T> cb, const Correction& correction,
                          int width, MutableLineOf<T> out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      using L = Lanes<T, n>;
      const L zero = L::All(0), threshold = L::All(static_cast<T>(correction.threshold));
      const L excessCr = Max(zero, Load<n>(cr + x) - threshold);
      const L excessCb = Max(zero, Load<n>(cb + x) - threshold);
      const auto products = DotPairs(excessCr, correction.gainCr, excessCb, correction.gainCb);
      const L twice = (Load<n>(y + x) << 1) - Narrowed(Quotient<4>(products)) + L::All(1);
      Store(out + x, Clamp(twice >> 1, 0, kHighestLuminance));
    });
  }

  const StageContext& context_;
  DetailGain gain_{};
  const Result gainStatus_;
  Correction correction_{};
  BlockOf<T> toneTable_;
  const Input<Sample> mix_;
  const Input<T> cr_, cb_;
  const Input<T> hShort_, hLong_, r_, v_, a_;
  const Output<T> luminance_{*this, kLuminance, {0, kHighestLuminance}};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_YMAIN_PROCS_INL_H

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

class YMainProcs final : public Stage {
 public:
  enum Port { kLuminance };

  template <typename T>
  YMainProcs(const StageContext& context, RamenToYmix<T>& mix, ColorSystemProc& chroma,
             HApcProcs& hApc, RApcProcs<T>& rApc, VApcProcs<T>& vApc, AApcProcs& aApc)
      : Stage(InfoOf(TypeId::kYMainProcs), context.size(),
              {&mix, &chroma, &hApc, &rApc, &vApc, &aApc}),
        context_(context),
        mix_(*this, mix, RamenToYmix<T>::kMixed),
        cr_(*this, chroma, ColorSystemProc::kCr),
        cb_(*this, chroma, ColorSystemProc::kCb),
        hShort_(*this, hApc, HApcProcs::kShort),
        hLong_(*this, hApc, HApcProcs::kLong),
        r_(*this, rApc, RApcProcs<T>::kDetail),
        v_(*this, vApc, VApcProcs<T>::kDetail),
        a_(*this, aApc, AApcProcs::kDetail) {}

  /// 96 for a code or tone level that does not exist, 3 without memory for the tone curve.
  [[nodiscard]] Result Prepare() override {
    const DevelopSettings& settings = context_.settings;
    DEIMG_RETURN_IF_FAILED(MakeDetailGain(context_.details().gain, settings.isoClass, gain_));
    if (!settings.fullProcessing()) return DEIMG_OK;
    if (!settings.toneIndex) return DEIMG_UNSUPPORTED;
    toneTable_ = BlockOf<std::int16_t>::Zeroed(kHighestLuminance + 1);
    if (!toneTable_) return DEIMG_OUT_OF_MEMORY;
    const auto& curve = context_.tuning.luminanceTone[*settings.toneIndex][settings.isoClass];
    for (int i = 0; i <= kHighestLuminance; ++i) {
      toneTable_.get()[i] = static_cast<std::int16_t>(LuminanceToneCurve(i, curve));
    }
    correction_ = CorrectionOf(context_.tuning.chromaCorrection[*settings.toneIndex]);
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

  void ComputeLine(int o) override {
    Sample* const out = luminance_[o];
    const bool full = context_.settings.fullProcessing();
    if (!full || context_.settings.quick()) {
      ScaleLine(mix_[o], width(), out);
    } else {
      AddDetailLine(mix_[o], hShort_[o], hLong_[o], r_[o], v_[o], a_[o], gain_, width(), out);
    }
    if (!full) return;
    LookUpLine(toneTable_.get(), width(), out);
    CorrectLine(cr_[o], cb_[o], correction_, width(), out);
  }

  /// y / 8, clipped.
  static void ScaleLine(Line y, int width, MutableLine out) {
    for (Index x = 0; x < width; ++x) out[x] = ClampedQuotient(y[x], 3, 0, kHighestLuminance);
  }

  /// Adds the details, weighted by level.
  static void AddDetailLine(Line y, Line hShort, Line hLong, Line r, Line v, Line a,
                            const DetailGain& gain, int width, MutableLine out) {
    const Sample rise = gain.rise, riseEnd = gain.riseEnd;
    const Sample hold = gain.hold, holdEnd = gain.holdEnd;
    const Sample fall = gain.fall, end = gain.end, negativeScale = gain.negativeScale;
    const auto enhanced = [&](Index x, Sample brightness, int shift) {
      const Sample level = ClampedQuotient(brightness, shift, 0, kHighestLevel);
      const Sample falling = Max(end - level, 0) * fall;
      const Sample weight = level < riseEnd ? level * rise : level < holdEnd ? hold : falling;
      const Sample detail = weight * (hShort[x] + hLong[x] + r[x] + v[x] + a[x]) / kChromaGainOne;
      const Sample sum = y[x] + (detail < 0 ? detail * negativeScale / kGainOne : detail);
      return ClampedQuotient(sum, 3, 0, kHighestLuminance);
    };
    const Index ends[] = {0, 1, width - 3, width - 2, width - 1};
    for (const Index x : ends) out[x] = enhanced(x, y[x], 6);
    for (Index x = 2; x < width - 3; ++x) {
      out[x] = enhanced(x, y[x - 2] + y[x + 2] + 2 * (y[x - 1] + y[x] + y[x + 1]), 9);
    }
  }

  /// In place: lowers the luminance where a colour difference exceeds the threshold.
  static void CorrectLine(Line cr, Line cb, const Correction& correction, int width,
                          MutableLine y) {
    const Sample threshold = correction.threshold;
    const Sample gainCr = correction.gainCr, gainCb = correction.gainCb;
    for (Index x = 0; x < width; ++x) {
      const Sample excessCr = Max(0, cr[x] - threshold);
      const Sample excessCb = Max(0, cb[x] - threshold);
      const Sample twice = 2 * y[x] - (excessCr * gainCr + excessCb * gainCb) / 16 + 1;
      y[x] = ClampedQuotient(twice, 1, 0, kHighestLuminance);
    }
  }

  const StageContext& context_;
  DetailGain gain_{};
  Correction correction_{};
  BlockOf<std::int16_t> toneTable_;
  const Input<Sample> mix_;
  const Input<Sample> cr_, cb_;
  const Input<Sample> hShort_, hLong_, r_, v_, a_;
  const Output<Sample> luminance_{*this, kLuminance};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_YMAIN_PROCS_INL_H

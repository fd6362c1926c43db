/// Horizontal aperture correction: a short and a long high-pass of the enhanced luminance, each
/// through its curve. Plain and quick processing skip the stage, and its lines stay 0.
///
/// Input: the enhanced luminance. Output: kShort, kLong.
#ifndef DEIMG_STAGES_LUMA_H_APC_PROCS_INL_H
#define DEIMG_STAGES_LUMA_H_APC_PROCS_INL_H

#include "stages/luma/apc_curve-inl.h"
#include "stages/luma/ramen_to_ymix-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class HApcProcs final : public Stage {
 public:
  enum Port { kShort, kLong };

  HApcProcs(const StageContext& context, RamenToYmix<T>& luminance)
      : Stage(InfoOf(TypeId::kHApcProcs), context.size(), {&luminance}),
        idle_(context.settings.withoutDetail()),
        tuning_(context.details()),
        shortCurve_(MakeApcCurve(tuning_.hApcShort, kCurveSize, kShift)),
        longCurve_(MakeApcCurve(tuning_.hApcLong, kCurveSize, kShift)),
        luminance_(*this, luminance, RamenToYmix<T>::kEnhanced),
        short_(*this, kShort, idle_ ? Exactly(0) : shortCurve_.values),
        long_(*this, kLong, idle_ ? Exactly(0) : longCurve_.values) {
    this->NeedsNarrow<T>(idle_ || (shortCurve_.isNarrow && longCurve_.isNarrow));
  }

  /// 1 for a record of another layout.
  [[nodiscard]] Result Prepare() override {
    constexpr int kLayout = 32;
    return idle_ || tuning_.hApcLayout == kLayout ? DEIMG_OK : DEIMG_BAD_TUNING;
  }

 private:
  static constexpr int kCurveSize = 8192;
  static constexpr int kShift = 4;

  void ComputeLine(int o) override {
    if (idle_) return;
    ShortHighPassLine(luminance_[o], shortCurve_, width(), short_[o]);
    LongHighPassLine(luminance_[o], longCurve_, width(), long_[o]);
  }

  /// The curves of the high-passes (-1, 0, 2, 0, -1) / 4 and (1, -4, -1, 8, -1, -4, 1) / 16, which
  /// are 0 in the columns without all neighbours.
  static void ShortHighPassLine(Line in, const ApcSegments& curve, int width,
                                MutableLineOf<T> out) {
    const auto highPassed = [=]<int n>(Index x) {
      return (Load<n>(in + x) << 1) - Load<n>(in + x - 2) - Load<n>(in + x + 2);
    };
    ApcCurveColumns<T>(curve, 0, 0, 2, Zero, out);
    ApcCurveColumns<T>(curve, 2, 2, width - 2, highPassed, out);
    ApcCurveColumns<T>(curve, 0, width - 2, width, Zero, out);
  }
  static void LongHighPassLine(Line in, const ApcSegments& curve, int width, MutableLineOf<T> out) {
    const auto highPassed = [=]<int n>(Index x) {
      const auto pair = [&](Index k) { return Load<n>(in + x - k) + Load<n>(in + x + k); };
      return (Load<n>(in + x) << 3) - pair(1) - (pair(2) << 2) + pair(3);
    };
    ApcCurveColumns<T>(curve, 0, 0, 3, Zero, out);
    ApcCurveColumns<T>(curve, 4, 3, width - 3, highPassed, out);
    ApcCurveColumns<T>(curve, 0, width - 3, width, Zero, out);
  }
  static constexpr auto Zero = []<int n>(Index) { return Lanes<Sample, n>::All(0); };

  const bool idle_;
  const DetailTuning& tuning_;
  const ApcSegments shortCurve_;
  const ApcSegments longCurve_;
  const Input<Sample> luminance_;
  const Output<T> short_;
  const Output<T> long_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_H_APC_PROCS_INL_H

/// Horizontal aperture correction: a short and a long high-pass of the enhanced luminance, each
/// through its curve. Plain and quick processing skip the stage, and its lines stay 0.
///
/// Input: the enhanced luminance. Output: kShort, kLong.
#ifndef DEIMG_STAGES_LUMA_H_APC_PROCS_INL_H
#define DEIMG_STAGES_LUMA_H_APC_PROCS_INL_H

#include "stages/luma/apc_curve-inl.h"
#include "stages/luma/ramen_to_ymix-inl.h"

namespace deimg::DEIMG_LEVEL {

class HApcProcs final : public Stage {
 public:
  enum Port { kShort, kLong };

  template <typename T>
  HApcProcs(const StageContext& context, RamenToYmix<T>& luminance)
      : Stage(InfoOf(TypeId::kHApcProcs), context.size(), {&luminance}),
        idle_(context.settings.withoutDetail()),
        tuning_(context.details()),
        shortCurve_(MakeApcCurve(tuning_.hApcShort, kCurveSize, kShift)),
        longCurve_(MakeApcCurve(tuning_.hApcLong, kCurveSize, kShift)),
        luminance_(*this, luminance, RamenToYmix<T>::kEnhanced) {}

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
  static void ShortHighPassLine(Line in, const ApcSegments& curve, int width, MutableLine out) {
    const auto zero = [](Index) { return Sample{0}; };
    ApcCurveColumns(curve, 0, 0, 2, zero, out);
    ApcCurveColumns(
        curve, 2, 2, width - 2, [&](Index x) { return 2 * in[x] - in[x - 2] - in[x + 2]; }, out);
    ApcCurveColumns(curve, 0, width - 2, width, zero, out);
  }
  static void LongHighPassLine(Line in, const ApcSegments& curve, int width, MutableLine out) {
    const auto zero = [](Index) { return Sample{0}; };
    ApcCurveColumns(curve, 0, 0, 3, zero, out);
    ApcCurveColumns(
        curve, 4, 3, width - 3,
        [&](Index x) {
          return 8 * in[x] - (in[x - 1] + in[x + 1]) - 4 * (in[x - 2] + in[x + 2]) +
                 (in[x - 3] + in[x + 3]);
        },
        out);
    ApcCurveColumns(curve, 0, width - 3, width, zero, out);
  }

  const bool idle_;
  const DetailTuning& tuning_;
  const ApcSegments shortCurve_;
  const ApcSegments longCurve_;
  const Input<Sample> luminance_;
  const Output<Sample> short_{*this, kShort};
  const Output<Sample> long_{*this, kLong};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_H_APC_PROCS_INL_H

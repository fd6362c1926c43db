/// Vertical aperture correction: a vertical high-pass, smoothed along the line, through its curve.
/// Plain and quick processing skip the stage, and its lines stay 0.
///
/// Input: the interpolated greens, seven lines. Output: kDetail.
#ifndef DEIMG_STAGES_LUMA_V_APC_PROCS_INL_H
#define DEIMG_STAGES_LUMA_V_APC_PROCS_INL_H

#include <algorithm>

#include "stages/luma/a_filter_hokan_lpf-inl.h"
#include "stages/luma/apc_curve-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class VApcProcs final : public Stage {
 public:
  enum Port { kDetail };

  VApcProcs(const StageContext& context, AFilterHokanLpf<T>& green)
      : Stage(InfoOf(TypeId::kVApcProcs), context.size(), {&green}, 1),
        idle_(context.settings.withoutDetail()),
        tuning_(context.details()),
        curve_(MakeApcCurve(tuning_.vApc, 8192, 1)),
        green_(*this, green, AFilterHokanLpf<T>::kGreen) {}

  /// 1 for a record of another layout.
  [[nodiscard]] Result Prepare() override {
    constexpr int kLayout = 6;
    return idle_ || tuning_.vApcLayout == kLayout ? DEIMG_OK : DEIMG_BAD_TUNING;
  }

 private:
  static constexpr int kThreeLines = 0;  // filter selectors
  static constexpr int kSevenLines = 5;

  void ComputeLine(int o) override {
    if (idle_) return;
    const SevenLines<T> in = green_.Around(o);
    const T* const* const l = in.line;
    Sample* const highPassed = Scratch(0);
    if (tuning_.vApcFilter == kThreeLines) {
      HighPass3Line(l[1], l[3], l[5], width(), highPassed);
    } else if (tuning_.vApcFilter == kSevenLines) {
      HighPass7Line(l[0], l[1], l[2], l[3], l[4], l[5], l[6], width(), highPassed);
    } else {
      // With any other selector the line goes on from what it held.
      std::copy_n(detail_[o], width(), highPassed);
    }
    SmoothLine(highPassed, curve_, width(), detail_[o]);
  }

  /// High-passes down the columns: (-1, 0, 2, 0, -1) / 2 and (1, -4, -1, 8, -1, -4, 1) / 8.
  static void HighPass3Line(LineOf<T> u2, LineOf<T> m, LineOf<T> d2, int width, MutableLine out) {
    for (Index x = 0; x < width; ++x) out[x] = (2 * m[x] - u2[x] - d2[x]) / 2;
  }
  static void HighPass7Line(LineOf<T> u3, LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1,
                            LineOf<T> d2, LineOf<T> d3, int width, MutableLine out) {
    for (Index x = 0; x < width; ++x) {
      out[x] = (8 * m[x] - (u1[x] + d1[x]) - 4 * (u2[x] + d2[x]) + (u3[x] + d3[x])) / 8;
    }
  }

  /// The curve of (1, 4, 6, 4, 1) / 16 along the line; the two outer columns on each side are not
  /// smoothed.
  static void SmoothLine(Line in, const ApcSegments& curve, int width, MutableLine out) {
    const auto own = [&](Index x) { return in[x]; };
    ApcCurveColumns(curve, 0, 0, 2, own, out);
    ApcCurveColumns(
        curve, 4, 2, width - 2,
        [&](Index x) { return 6 * in[x] + 4 * (in[x - 1] + in[x + 1]) + (in[x - 2] + in[x + 2]); },
        out);
    ApcCurveColumns(curve, 0, width - 2, width, own, out);
  }

  const bool idle_;
  const DetailTuning& tuning_;
  const ApcSegments curve_;
  const Input<T> green_;
  const Output<Sample> detail_{*this, kDetail};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_V_APC_PROCS_INL_H

/// Vertical aperture correction: a vertical high-pass, smoothed along the line, through its curve.
/// Plain and quick processing skip the stage, and its lines stay 0.
///
/// Input: the interpolated greens, seven lines. Output: kDetail.
#ifndef DEIMG_STAGES_LUMA_V_APC_PROCS_INL_H
#define DEIMG_STAGES_LUMA_V_APC_PROCS_INL_H

#include <algorithm>

#include "stages/colour/smoothing-inl.h"
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
        green_(*this, green, AFilterHokanLpf<T>::kGreen),
        detail_(*this, kDetail, idle_ ? Exactly(0) : curve_.values) {
    this->NeedsNarrow<T>(idle_ || curve_.isNarrow);
    if (!idle_) NeedsOfFilters(green_.range());
  }

  /// 1 for a record of another layout.
  [[nodiscard]] Result Prepare() override {
    constexpr int kLayout = 6;
    return idle_ || tuning_.vApcLayout == kLayout ? DEIMG_OK : DEIMG_BAD_TUNING;
  }

  [[nodiscard]] bool NeedsLineBefore() const override {
    const int filter = tuning_.vApcFilter;
    return !idle_ && filter != kThreeLines && filter != kSevenLines;
  }

 private:
  static constexpr int kThreeLines = 0;  // filter selectors
  static constexpr int kSevenLines = 5;

  /// What the filters need, all alike: a pair of samples, and a pair of high-passed ones.
  void NeedsOfFilters(Range green) {
    const Range pair = green + green;
    const Range highPassed = Either(2 * green - pair, (8 * green - pair - 4 * pair + pair) / 4) / 2;
    this->template Needs<T>(pair);
    this->template Needs<T>(2 * green - pair);
    this->template Needs<T>(highPassed + highPassed);
    if (GoesOn()) this->template Needs<T>(detail_.range() + detail_.range());
  }

  /// With a selector of no filter a line goes on from what it held.
  bool GoesOn() const {
    return tuning_.vApcFilter != kThreeLines && tuning_.vApcFilter != kSevenLines;
  }

  void ComputeLine(int o) override {
    if (idle_) return;
    const SevenLines<T> in = green_.Around(o);
    const T* const* const l = in.line;
    T* const highPassed = Scratch<T>(0);
    if (tuning_.vApcFilter == kThreeLines) {
      HighPass3Line(l[1], l[3], l[5], width(), highPassed);
    } else if (tuning_.vApcFilter == kSevenLines) {
      HighPass7Line(l[0], l[1], l[2], l[3], l[4], l[5], l[6], width(), highPassed);
    } else {
      std::copy_n(detail_[o], width(), highPassed);
    }
    SmoothLine(highPassed, curve_, width(), detail_[o]);
  }

  /// High-passes down the columns: (-1, 0, 2, 0, -1) / 2 and (1, -4, -1, 8, -1, -4, 1) / 8.
  static void HighPass3Line(LineOf<T> u2, LineOf<T> m, LineOf<T> d2, int width,
                            MutableLineOf<T> out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      Store(out + x, Quotient<1>((Load<n>(m + x) << 1) - Load<n>(u2 + x) - Load<n>(d2 + x)));
    });
  }
  static void HighPass7Line(LineOf<T> u3, LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1,
                            LineOf<T> d2, LineOf<T> d3, int width, MutableLineOf<T> out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto pair = [&](LineOf<T> u, LineOf<T> d) { return Load<n>(u + x) + Load<n>(d + x); };
      Store(out + x, Narrowed(Quotient<3>(DotPairs(Load<n>(m + x), 8, pair(u1, d1), -1) +
                                          DotPairs(pair(u2, d2), -4, pair(u3, d3), 1))));
    });
  }

  /// The curve of (1, 4, 6, 4, 1) / 16 along the line; the two outer columns on each side are not
  /// smoothed.
  static void SmoothLine(LineOf<T> in, const ApcSegments& curve, int width, MutableLineOf<T> out) {
    ForColumns<T>(2, width - 2, [=]<int n>(LaneCount<n>, Index x) {
      const auto sum = DotPairs(Load<n>(in + x), 6, PairAt<n>(in + x, 1), 4) +
                       DotPairs(PairAt<n>(in + x, 2), 1, Lanes<T, n>::All(0), 0);
      Store(out + x, ApcCurveOf(curve, 4, sum));
    });
    for (const int x : {0, 1, width - 2, width - 1}) {
      out[x] = ApcCurveOf(curve, 0, Widened(Load<1>(in + x))).v;
    }
  }

  const bool idle_;
  const DetailTuning& tuning_;
  const ApcSegments curve_;
  const Input<T> green_;
  const Output<T> detail_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_V_APC_PROCS_INL_H

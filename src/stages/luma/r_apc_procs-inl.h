/// Two-dimensional aperture correction.
///
/// Subtracts a weighted blend of two smoothed versions of the input from a lightly smoothed
/// reference; all three carry 16 times the input. The difference goes through its curve. Plain and
/// quick processing skip the stage, and its lines stay 0.
///
/// Input: the interpolated greens, seven lines. Output: kDetail; kFirstSmooth and kSecondSmooth
/// hold the smooth versions.
#ifndef DEIMG_STAGES_LUMA_R_APC_PROCS_INL_H
#define DEIMG_STAGES_LUMA_R_APC_PROCS_INL_H

#include "stages/colour/smoothing-inl.h"
#include "stages/luma/a_filter_hokan_lpf-inl.h"
#include "stages/luma/apc_curve-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class RApcProcs final : public Stage {
 public:
  enum Port { kDetail, kFirstSmooth, kSecondSmooth };

  RApcProcs(const StageContext& context, AFilterHokanLpf<T>& green)
      : Stage(InfoOf(TypeId::kRApcProcs), context.size(), {&green}, 1),
        idle_(context.settings.withoutDetail()),
        mode0_(context.details().rApcHorizontalMode),
        mode1_(context.details().rApcVerticalMode),
        weight_(context.details().rApcBlend),
        curve_(MakeApcCurve(context.details().rApc, 8192, 3)),
        green_(*this, green, AFilterHokanLpf<T>::kGreen),
        detail_(*this, kDetail, idle_ ? Exactly(0) : curve_.values) {
    this->NeedsNarrow<T>(idle_ || curve_.isNarrow);
    this->template Needs<T>(4 * green_.range());
  }

  /// 96 for a horizontal pass, 1 for a vertical filter or a blend that does not exist.
  [[nodiscard]] Result Prepare() override {
    if (idle_) return DEIMG_OK;
    if (mode0_ != kSum && mode0_ != kSharp && mode0_ != kSoft) return DEIMG_UNSUPPORTED;
    if (mode1_ < kSevenLines || mode1_ > kFiveLines) return DEIMG_BAD_TUNING;
    // The same mode chooses the second horizontal pass, which does not know the one between.
    if (mode1_ != kSevenLines && mode1_ != kFiveLines) return DEIMG_UNSUPPORTED;
    return weight_ < 0 ? DEIMG_BAD_TUNING : DEIMG_OK;
  }

 private:
  // Modes of the horizontal passes, and of the second vertical filter.
  static constexpr int kSum = 0, kSharp = 2, kSoft = 3;
  static constexpr int kSevenLines = 0, kFiveLines = 2;

  void ComputeLine(int o) override {
    if (idle_) return;
    const SevenLines<T> in = green_.Around(o);
    const T* const* const l = in.line;
    Sample* const vertical = Scratch(0);
    Sample* const smooth0 = smooth0_[o];
    Sample* const smooth1 = smooth1_[o];
    Vertical5Line(l[1], l[2], l[3], l[4], l[5], width(), vertical);
    HorizontalPass(vertical, mode0_, 1, smooth0);
    if (mode1_ == kSevenLines) {
      Vertical7Line(l[0], l[1], l[2], l[3], l[4], l[5], l[6], width(), vertical);
    }  // otherwise the first filter's line serves again
    HorizontalPass(vertical, mode1_, 4, smooth1);
    SharpenLine(l[2], l[3], l[4], smooth0, smooth1, weight_, curve_, width(), detail_[o]);
  }

  void HorizontalPass(const Sample* in, int mode, Sample sharpEdge, Sample* out) const {
    if (mode == kSum) {
      Horizontal121Line(in, width(), out);
    } else if (mode == kSharp) {
      Horizontal5Line(in, 10, -1, sharpEdge, width(), out);
    } else {
      Horizontal5Line(in, 6, 1, 1, width(), out);
    }
  }

  /// Vertical low-passes with a gain of 4: (1, 4, 6, 4, 1) / 4 and
  /// (-1, 2, 17, 28, 17, 2, -1) / 16.
  static void Vertical5Line(LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1, LineOf<T> d2,
                            int width, MutableLine out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto pair = [=](LineOf<T> u, LineOf<T> d) { return Load<n>(u + x) + Load<n>(d + x); };
      const auto zero = Lanes<T, n>::All(0);
      StoreSums(out + x, Quotient<2>(DotPairs(Load<n>(m + x), 6, pair(u1, d1), 4) +
                                     DotPairs(pair(u2, d2), 1, zero, 0)));
    });
  }
  static void Vertical7Line(LineOf<T> u3, LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1,
                            LineOf<T> d2, LineOf<T> d3, int width, MutableLine out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto pair = [=](LineOf<T> u, LineOf<T> d) { return Load<n>(u + x) + Load<n>(d + x); };
      StoreSums(out + x, Quotient<4>(DotPairs(Load<n>(m + x), 28, pair(u1, d1), 17) +
                                     DotPairs(pair(u2, d2), 2, pair(u3, d3), -1)));
    });
  }

  /// Horizontal pass (1, 2, 1) with a gain of 4. The last column adds its new left neighbour.
  static void Horizontal121Line(Line in, int width, MutableLine out) {
    const int last = width - 1;
    out[0] = 2 * in[0] + 2 * in[1];
    ForHalves<T>(1, last, [=]<int n>(LaneCount<n>, Index x) {
      Store(out + x, PairAt<n>(in + x, 1) + (Load<n>(in + x) << 1));
    });
    out[last] = 2 * out[last - 1] + 2 * in[last];
  }

  /// Horizontal pass (far, 4, centre, 4, far) / 4; the two outer columns on each side are
  /// multiplied by `edge`.
  static void Horizontal5Line(Line in, Sample centre, Sample far, Sample edge, int width,
                              MutableLine out) {
    for (const int x : {0, 1, width - 2, width - 1}) out[x] = edge * in[x];
    ForHalves<T>(2, width - 2, [=]<int n>(LaneCount<n>, Index x) {
      const auto sum =
          Load<n>(in + x) * centre + (PairAt<n>(in + x, 1) << 2) + PairAt<n>(in + x, 2) * far;
      Store(out + x, Quotient<2>(sum));
    });
  }

  /// The curve of a reference, (1, 2, 1) down the columns with a gain of 16, minus the blend of
  /// both smooth lines, `weight` eighths of the second.
  static void SharpenLine(LineOf<T> u1, LineOf<T> m, LineOf<T> d1, Line smooth0, Line smooth1,
                          Sample weight, const ApcSegments& curve, int width,
                          MutableLineOf<T> out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto sum = Load<n>(u1 + x) + (Load<n>(m + x) << 1) + Load<n>(d1 + x);
      const auto first = LoadSums<n, T>(smooth0 + x), second = LoadSums<n, T>(smooth1 + x);
      const auto difference = (((Widened(sum) << 2) - first) << 3) - (second - first) * weight;
      Store(out + x, ApcCurveOf(curve, 3, difference));
    });
  }

  const bool idle_;
  const int mode0_;
  const int mode1_;
  const Sample weight_;
  const ApcSegments curve_;
  const Input<T> green_;
  const Output<T> detail_;
  const Output<Sample> smooth0_{*this, kFirstSmooth};
  const Output<Sample> smooth1_{*this, kSecondSmooth};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_R_APC_PROCS_INL_H

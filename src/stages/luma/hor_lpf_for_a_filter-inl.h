/// Horizontal low-pass after the vertical one: the sums of three columns, weighted 1, 2, 1.
///
/// Input: the vertical low-pass, one line. Output: kLowPassed, four times its scale, sixteen times
/// the mosaic's. The outer columns are multiplied by 4.
#ifndef DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_INL_H
#define DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_INL_H

#include "stages/luma/ver_lpf_for_a_filter-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class HorLpfForAFilter final : public Stage {
 public:
  enum Port { kLowPassed };

  HorLpfForAFilter(const StageContext& context, VerLpfForAFilter<T>& vertical)
      : Stage(InfoOf(TypeId::kHorLpfForAFilter), context.size(), {&vertical}),
        vertical_(*this, vertical, VerLpfForAFilter<T>::kLowPassed),
        lowPassed_(*this, kLowPassed, 4 * vertical_.range()) {}

 private:
  void ComputeLine(int o) override { SmoothLine(vertical_[o], width(), lowPassed_[o]); }

  static void SmoothLine(LineOf<T> in, int width, MutableLine out) {
    const int last = width - 1;
    out[0] = 4 * in[0];
    out[last] = 4 * in[last];
    ForColumns<T>(1, last, [=]<int n>(LaneCount<n>, Index x) {
      const auto none = Lanes<T, n>::All(0);
      StoreSums(out + x, DotPairs(Load<n>(in + x - 1), 1, Load<n>(in + x), 2) +
                             DotPairs(Load<n>(in + x + 1), 1, none, 0));
    });
  }

  const Input<T> vertical_;
  const Output<Sample> lowPassed_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_INL_H

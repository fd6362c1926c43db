/// Horizontal interpolation of the green sites: they are doubled, the sites between get the sum of
/// both neighbours; at the ends of the line the one neighbour counts twice.
///
/// Input: the white-balanced mosaic, one line. Output: kGreen, twice the mosaic's scale.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_INL_H
#define DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_INL_H

#include "line/lanes-inl.h"
#include "stages/colour/white_balance-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class AFilterHokanLpf final : public Stage {
 public:
  enum Port { kGreen };

  AFilterHokanLpf(const StageContext& context, WhiteBalance<T>& mosaic)
      : Stage(InfoOf(TypeId::kAFilterHokanLpf), context.size(), {&mosaic}),
        selector_(context.filters().hokanLpfSelect),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic),
        green_(*this, kGreen, 2 * mosaic_.range()) {}

  /// 96 for a selector that the camera does not know.
  [[nodiscard]] Result Prepare() override {
    // All of them stand for the same weights.
    constexpr int kSelectors[] = {24, 33, 42, 55, 98, 111, 116, 125, 128};
    for (const int known : kSelectors) {
      if (selector_ == known) return DEIMG_OK;
    }
    return DEIMG_UNSUPPORTED;
  }

 private:
  void ComputeLine(int o) override {
    // Green lies on the even columns of odd lines and on the odd columns of even ones.
    const auto spreadLine = IsOddAt(o) ? SpreadLine<0> : SpreadLine<1>;
    spreadLine(mosaic_[o], width(), green_[o]);
  }

  /// `own` is the parity of the green columns.
  template <int own>
  static void SpreadLine(LineOf<T> in, int width, MutableLineOf<T> out) {
    ForColumns<T>(2, width - 2, [=]<int n>(LaneCount<n>, Index x) {
      const auto here = Load<n>(in + x) << 1, beside = Load<n>(in + x - 1) + Load<n>(in + x + 1);
      Store(out + x, own == 0 ? ByColumnParity(x, here, beside) : ByColumnParity(x, beside, here));
    });
    const auto twice = [=](Index x) { return static_cast<T>(2 * in[x]); };
    const auto between = [=](Index x) { return static_cast<T>(in[x - 1] + in[x + 1]); };
    const Index last = width - 1;
    out[0] = twice(own);
    out[1] = own == 0 ? between(1) : twice(1);
    out[last - 1] = own == 0 ? twice(last - 1) : between(last - 1);
    out[last] = twice(last - 1 + own);
  }

  const int selector_;
  const Input<T> mosaic_;
  const Output<T> green_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_INL_H

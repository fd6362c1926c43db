/// Horizontal interpolation of the green sites: they are doubled, the sites between get the sum of
/// both neighbours; at the ends of the line the one neighbour counts twice.
///
/// Input: the white-balanced mosaic, one line. Output: kGreen, twice the mosaic's scale.
#ifndef DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_INL_H
#define DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_INL_H

#include "stages/colour/white_balance-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class AFilterHokanLpf final : public Stage {
 public:
  enum Port { kGreen };

  AFilterHokanLpf(const StageContext& context, WhiteBalance<T>& mosaic)
      : Stage(InfoOf(TypeId::kAFilterHokanLpf), context.size(), {&mosaic}),
        selector_(context.filters().hokanLpfSelect),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic) {}

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
    const auto spreadLine = IsOddAt(o) ? SpreadEvenColumnsLine : SpreadOddColumnsLine;
    spreadLine(mosaic_[o], width(), green_[o]);
  }

  static void SpreadEvenColumnsLine(LineOf<T> in, int width, MutableLineOf<T> out) {
    ColumnOf<T> column = 1;
    for (Index x = 1; x < width - 1; ++x, ++column) {
      out[x] =
          ByParity<T>(column, static_cast<T>(2 * in[x]), static_cast<T>(in[x - 1] + in[x + 1]));
    }
    out[0] = static_cast<T>(2 * in[0]);
    out[width - 1] = static_cast<T>(2 * in[width - 2]);
  }

  static void SpreadOddColumnsLine(LineOf<T> in, int width, MutableLineOf<T> out) {
    ColumnOf<T> column = 1;
    for (Index x = 1; x < width - 1; ++x, ++column) {
      out[x] =
          ByParity<T>(column, static_cast<T>(in[x - 1] + in[x + 1]), static_cast<T>(2 * in[x]));
    }
    out[0] = static_cast<T>(2 * in[1]);
    out[width - 1] = static_cast<T>(2 * in[width - 1]);
  }

  const int selector_;
  const Input<T> mosaic_;
  const Output<T> green_{*this, kGreen};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_A_FILTER_HOKAN_LPF_INL_H

/// Vertical low-pass of the green sites.
///
/// Forms at every site a low-passed value of the sites whose line plus column number is odd, the
/// green ones: from themselves and those two lines away, or from those one and three lines away.
///
/// Input: the white-balanced mosaic, seven lines. Output: kLowPassed, four times its scale.
#ifndef DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_INL_H
#define DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_INL_H

#include "stages/colour/white_balance-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class VerLpfForAFilter final : public Stage {
 public:
  enum Port { kLowPassed };

  VerLpfForAFilter(const StageContext& context, WhiteBalance<T>& mosaic)
      : Stage(InfoOf(TypeId::kVerLpfForAFilter), context.size(), {&mosaic}),
        selector_(context.filters().verLpfKernelSelect),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic) {}

  /// 96 for a kernel that does not exist.
  [[nodiscard]] Result Prepare() override {
    for (const Kernel& kernel : kKernels) {
      if (kernel.selector == selector_) kernel_ = &kernel;
    }
    return kernel_ != nullptr ? DEIMG_OK : DEIMG_UNSUPPORTED;
  }

 private:
  /// The taps t0 t1 t2 t3 t2 t1 t0: t1 t3 t1 for the sites themselves, t0 t2 t2 t0 between them.
  struct Kernel {
    int selector;
    Sample t0, t1, t2, t3;
  };
  static constexpr Kernel kKernels[] = {
      {8, 1, -2, 7, 20},  {9, 2, -2, 6, 20},  {10, 1, -4, 7, 24}, {15, 2, -5, 6, 26},
      {24, 0, -2, 8, 20}, {26, 0, -4, 8, 24}, {28, 0, 0, 8, 16},
  };

  void ComputeLine(int o) override {
    const SevenLines<T> in = mosaic_.Around(o);
    const T* const* const l = in.line;
    const auto filterLine = IsOddAt(o) ? FilterLine<0> : FilterLine<1>;
    filterLine(l[0], l[1], l[2], l[3], l[4], l[5], l[6], *kernel_, width(), lowPassed_[o]);
  }

  /// `own` is the parity of the columns that hold the low-passed sites themselves.
  template <int own>
  static void FilterLine(LineOf<T> u3, LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1,
                         LineOf<T> d2, LineOf<T> d3, const Kernel& k, int width, MutableLine out) {
    const Sample t0 = k.t0, t1 = k.t1, t2 = k.t2, t3 = k.t3;
    ColumnOf<Sample> column = 0;
    for (Index x = 0; x < width; ++x, ++column) {
      const Sample site = t3 * m[x] + t1 * (u2[x] + d2[x]);
      const Sample between = t2 * (u1[x] + d1[x]) + t0 * (u3[x] + d3[x]);
      out[x] = ByParity<Sample>(column, own == 0 ? site : between, own == 0 ? between : site) / 4;
    }
  }

  const int selector_;
  const Kernel* kernel_ = nullptr;
  const Input<T> mosaic_;
  const Output<Sample> lowPassed_{*this, kLowPassed};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_INL_H

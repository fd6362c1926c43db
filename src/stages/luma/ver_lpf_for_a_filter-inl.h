/// Vertical low-pass of the green sites.
///
/// Forms at every site a low-passed value of the sites whose line plus column number is odd, the
/// green ones: from themselves and those two lines away, or from those one and three lines away.
///
/// Input: the white-balanced mosaic, seven lines. Output: kLowPassed, four times its scale.
#ifndef DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_INL_H
#define DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_INL_H

#include "line/lanes-inl.h"
#include "stages/colour/white_balance-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class VerLpfForAFilter final : public Stage {
 public:
  enum Port { kLowPassed };

  VerLpfForAFilter(const StageContext& context, WhiteBalance<T>& mosaic)
      : Stage(InfoOf(TypeId::kVerLpfForAFilter), context.size(), {&mosaic}),
        kernel_(KernelOf(context.filters().verLpfKernelSelect)),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic),
        lowPassed_(*this, kLowPassed, LowPassedRange(mosaic_.range())) {
    this->template Needs<T>(mosaic_.range() + mosaic_.range());
  }

  /// 96 for a kernel that does not exist.
  [[nodiscard]] Result Prepare() override {
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

  static const Kernel* KernelOf(int selector) {
    for (const Kernel& kernel : kKernels) {
      if (kernel.selector == selector) return &kernel;
    }
    return nullptr;
  }

  Range LowPassedRange(Range m) const {
    if (kernel_ == nullptr) return Exactly(0);
    const Range site = kernel_->t3 * m + kernel_->t1 * (m + m);
    const Range between = kernel_->t2 * (m + m) + kernel_->t0 * (m + m);
    return Either(site, between) / 4;
  }

  void ComputeLine(int o) override {
    const SevenLines<T> in = mosaic_.Around(o);
    const T* const* const l = in.line;
    const auto filterLine = IsOddAt(o) ? FilterLine<0> : FilterLine<1>;
    filterLine(l[0], l[1], l[2], l[3], l[4], l[5], l[6], *kernel_, width(), lowPassed_[o]);
  }

  /// `own` is the parity of the columns that hold the low-passed sites themselves.
  template <int own>
  static void FilterLine(LineOf<T> u3, LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1,
                         LineOf<T> d2, LineOf<T> d3, const Kernel& k, int width,
                         MutableLineOf<T> out) {
    const Sample t0 = k.t0, t1 = k.t1, t2 = k.t2, t3 = k.t3;
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto pair = [&](LineOf<T> u, LineOf<T> d) { return Load<n>(u + x) + Load<n>(d + x); };
      const auto site = Narrowed(Quotient<2>(DotPairs(Load<n>(m + x), t3, pair(u2, d2), t1)));
      const auto between = Narrowed(Quotient<2>(DotPairs(pair(u1, d1), t2, pair(u3, d3), t0)));
      Store(out + x,
            own == 0 ? ByColumnParity(x, site, between) : ByColumnParity(x, between, site));
    });
  }

  const Kernel* const kernel_;
  const Input<T> mosaic_;
  const Output<T> lowPassed_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_INL_H

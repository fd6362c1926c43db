#include "stages/luma/ver_lpf_for_a_filter.h"

namespace deimg {
namespace {

struct Kernel {
  int selector;
  VerLpfTaps taps;
};

constexpr Kernel kKernels[] = {
    {8, {1, -2, 7, 20}},  {9, {2, -2, 6, 20}},  {10, {1, -4, 7, 24}}, {15, {2, -5, 6, 26}},
    {24, {0, -2, 8, 20}}, {26, {0, -4, 8, 24}}, {28, {0, 0, 8, 16}},
};

}  // namespace

std::optional<VerLpfTaps> VerLpfTapsOf(int selector) {
  for (const Kernel& kernel : kKernels) {
    if (kernel.selector == selector) return kernel.taps;
  }
  return std::nullopt;
}

template <typename T>
VerLpfForAFilter<T>::VerLpfForAFilter(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kVerLpfForAFilter), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

template <typename T>
Result VerLpfForAFilter<T>::Run(int first, int last) {
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const auto taps = VerLpfTapsOf(tuning_.verLpfKernelSelect(*setIndex));
  if (!taps) return DEIMG_UNSUPPORTED;
  ComponentX* const mosaic = input(0);
  if (mosaic == nullptr) return DEIMG_MISSING;
  for (int o = first; o <= last; ++o) {
    kernels_.mosaic<T>().verLpfLine(LinesAround<T>(*mosaic, o), taps->data(), IsOddAt(o), width(),
                                    OwnLine(o, 0));
  }
  return DEIMG_OK;
}

template class VerLpfForAFilter<NarrowSample>;
template class VerLpfForAFilter<Sample>;

}  // namespace deimg

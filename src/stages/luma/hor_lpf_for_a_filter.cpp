#include "stages/luma/hor_lpf_for_a_filter.h"

#include <algorithm>

namespace deimg {
namespace {

struct Kernel {
  int tapCount;
  Sample divisor;
  std::array<Sample, HorLpfForAFilter::kMostTaps> taps;
};

constexpr Kernel kDefaultKernels[] = {
    {3, 4, {1, 2, 1}},
    {5, 8, {1, 2, 2, 2, 1}},
    {7, 16, {1, 2, 3, 4, 3, 2, 1}},
    {9, 25, {1, 2, 3, 4, 5, 4, 3, 2, 1}},
};

}  // namespace

HorLpfForAFilter::HorLpfForAFilter(const StageContext& context, int tapCount)
    : ComponentX(InfoOf(TypeId::kHorLpfForAFilter), context.width, context.height, 4),
      kernels_(context.kernels),
      tapCount_(tapCount) {
  for (const Kernel& kernel : kDefaultKernels) {
    if (kernel.tapCount != tapCount) continue;
    taps_ = kernel.taps;
    divisor_ = kernel.divisor;
  }
}

void HorLpfForAFilter::SetTaps(std::span<const Sample> taps, Sample divisor) {
  if (divisor_ == 0 || taps.size() != static_cast<std::size_t>(tapCount_)) return;
  std::copy(taps.begin(), taps.end(), taps_.begin());
  divisor_ = divisor;
}

Result HorLpfForAFilter::Run(int first, int last) {
  if (divisor_ == 0) return DEIMG_BAD_TUNING;
  ComponentX* const source = input(0);
  if (source == nullptr) return DEIMG_MISSING;
  for (int o = first; o <= last; ++o) {
    kernels_.horLpfLine(source->GetLine(o, 0), taps_.data(), tapCount_, divisor_, width(),
                        OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

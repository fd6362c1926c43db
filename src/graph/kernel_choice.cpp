#include "graph/kernels.h"

#ifndef DEIMG_HIGHEST_KERNEL_LEVEL
#define DEIMG_HIGHEST_KERNEL_LEVEL kAvx512
#endif

namespace deimg {

const Kernels& ChosenKernels() {
  static const Kernels* const chosen = [] {
    const Kernels* best = KernelsOf(KernelLevel::kBaseline);
    for (const KernelLevel level : kKernelLevels) {
      if (level > KernelLevel::DEIMG_HIGHEST_KERNEL_LEVEL) continue;
      if (const Kernels* const kernels = KernelsOf(level)) best = kernels;
    }
    return best;
  }();
  return *chosen;
}

}  // namespace deimg

// The benchmarks' choice of kernels: the level that DEIMG_BENCH_LEVEL names (0, 1, 2), else the
// best one.
#include <cstdio>
#include <cstdlib>

#include "graph/kernels.h"

namespace deimg {

const Kernels& ChosenKernels() {
  static const Kernels* const chosen = [] {
    const char* const wanted = std::getenv("DEIMG_BENCH_LEVEL");
    const Kernels* best = nullptr;
    for (const KernelLevel level : kKernelLevels) {
      const Kernels* const kernels = KernelsOf(level);
      if (kernels != nullptr && (wanted == nullptr || std::atoi(wanted) == static_cast<int>(level)))
        best = kernels;
    }
    if (best != nullptr) return best;
    std::fprintf(stderr, "this processor does not have the level wanted\n");
    std::exit(1);
  }();
  return *chosen;
}

}  // namespace deimg

#include "graph/kernels.h"

namespace deimg {

extern const Kernels kBaselineKernels;
#ifdef DEIMG_X86_KERNELS
extern const Kernels kAvx2Kernels;
extern const Kernels kAvx512Kernels;
#endif

const Kernels* KernelsOf(KernelLevel level) {
#ifdef DEIMG_X86_KERNELS
  __builtin_cpu_init();
  if (level == KernelLevel::kAvx2) {
    const bool has = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi2") != 0;
    return has ? &kAvx2Kernels : nullptr;
  }
  if (level == KernelLevel::kAvx512) {
    const bool has = __builtin_cpu_supports("avx512bw") != 0 &&
                     __builtin_cpu_supports("avx512vl") != 0 &&
                     __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("bmi2") != 0;
    return has ? &kAvx512Kernels : nullptr;
  }
#endif
  return level == KernelLevel::kBaseline ? &kBaselineKernels : nullptr;
}

}  // namespace deimg

#include "support/kernel_choice.h"

#include <atomic>

namespace deimg {
namespace {

std::atomic<const Kernels*> forced{nullptr};
std::atomic<int> choices{0};

const Kernels* Best() {
  const Kernels* best = nullptr;
  for (const KernelLevel level : kKernelLevels) {
    if (const Kernels* const kernels = KernelsOf(level)) best = kernels;
  }
  return best;
}

}  // namespace

const Kernels& ChosenKernels() {
  static const Kernels* const best = Best();
  ++choices;
  const Kernels* const kernels = forced;
  return kernels != nullptr ? *kernels : *best;
}

namespace testing {

KernelScope::KernelScope(KernelLevel level) { forced = KernelsOf(level); }
KernelScope::~KernelScope() { forced = nullptr; }
int KernelScope::Choices() { return choices; }

}  // namespace testing
}  // namespace deimg

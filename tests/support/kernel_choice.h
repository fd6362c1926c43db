/// The test build's choice of kernels.
#ifndef DEIMG_TESTS_SUPPORT_KERNEL_CHOICE_H
#define DEIMG_TESTS_SUPPORT_KERNEL_CHOICE_H

#include <gtest/gtest.h>

#include <string>

#include "graph/kernels.h"

namespace deimg::testing {

/// Jobs of this process use the kernels of a level while an object of this class lives; without one
/// they use the best.
class KernelScope {
 public:
  explicit KernelScope(KernelLevel level);
  ~KernelScope();
  KernelScope(const KernelScope&) = delete;
  KernelScope& operator=(const KernelScope&) = delete;

  /// Jobs that asked for kernels since the start of the process.
  static int Choices();
};

/// Tests that run once per instruction level of this build and this processor.
class KernelTest : public ::testing::TestWithParam<KernelLevel> {
 protected:
  void SetUp() override {
    if (k == nullptr) GTEST_SKIP() << "this processor does not have the level";
  }
  const Kernels* const k = KernelsOf(GetParam());
};

inline std::string LevelName(const ::testing::TestParamInfo<KernelLevel>& info) {
  constexpr const char* kNames[] = {"Baseline", "Avx2", "Avx512"};
  return kNames[static_cast<int>(info.param)];
}

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_KERNEL_CHOICE_H

/// The test build's choice of instruction level.
#ifndef DEIMG_TESTS_SUPPORT_LEVEL_CHOICE_H
#define DEIMG_TESTS_SUPPORT_LEVEL_CHOICE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pipeline/levels.h"

namespace deimg::testing {

/// Jobs of this process use a level while an object of this class lives; without one they use the
/// best.
class LevelScope {
 public:
  explicit LevelScope(const Level& level);
  ~LevelScope();
  LevelScope(const LevelScope&) = delete;
  LevelScope& operator=(const LevelScope&) = delete;

  /// Jobs that asked for a level since the start of the process.
  static int Choices();
};

/// Tests that run once per instruction level of this build; those that this processor does not have
/// are skipped.
class LevelTest : public ::testing::TestWithParam<const Level*> {
 protected:
  void SetUp() override {
    if (!level.isSupported()) GTEST_SKIP() << "this processor does not have the level";
  }
  const Level& level = *GetParam();
};

inline std::vector<const Level*> AllLevels() {
  std::vector<const Level*> levels;
  for (const Level& level : Levels()) levels.push_back(&level);
  return levels;
}
inline std::string LevelName(const ::testing::TestParamInfo<const Level*>& info) {
  std::string name = info.param->name;
  std::erase(name, '.');
  return name;
}

}  // namespace deimg::testing

#define DEIMG_INSTANTIATE_LEVELS(suite)                                                       \
  INSTANTIATE_TEST_SUITE_P(Levels, suite, ::testing::ValuesIn(::deimg::testing::AllLevels()), \
                           ::deimg::testing::LevelName)

#endif  // DEIMG_TESTS_SUPPORT_LEVEL_CHOICE_H

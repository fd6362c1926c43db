#include "support/level_choice.h"

#include <atomic>

namespace deimg {
namespace {

std::atomic<const Level*> forced{nullptr};
std::atomic<int> choices{0};

}  // namespace

const Level& ChosenLevel() {
  static const Level& best = BestLevel("");
  ++choices;
  const Level* const level = forced;
  return level != nullptr ? *level : best;
}

namespace testing {

LevelScope::LevelScope(const Level& level) { forced = &level; }
LevelScope::~LevelScope() { forced = nullptr; }
int LevelScope::Choices() { return choices; }

}  // namespace testing
}  // namespace deimg

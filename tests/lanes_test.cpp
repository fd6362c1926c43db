// Every operation on the lanes of a vector against the same on one lane, which is the plain
// formula, over the whole domain of 16-bit samples where that is small.
#include <gtest/gtest.h>

#include <map>

#include "support/level_choice.h"

namespace deimg {

#define DEIMG_DECLARE(space)                         \
  namespace space {                                  \
  extern std::vector<std::string> LaneDifferences(); \
  }
DEIMG_DECLARE(baseline)
#ifdef DEIMG_X86_LEVELS
DEIMG_DECLARE(sse41)
DEIMG_DECLARE(avx2)
DEIMG_DECLARE(avx512)
#endif

namespace {

class Lanes : public testing::LevelTest {};
DEIMG_INSTANTIATE_LEVELS(Lanes);

TEST_P(Lanes, ComputeWhatOneLaneDoes) {
  static const std::map<std::string_view, std::vector<std::string> (*)()> kDifferences = {
#ifdef DEIMG_X86_LEVELS
      {"sse2", baseline::LaneDifferences},
      {"sse4.1", sse41::LaneDifferences},
      {"avx2", avx2::LaneDifferences},
      {"avx512", avx512::LaneDifferences},
#else
      {"baseline", baseline::LaneDifferences},
#endif
  };
  EXPECT_EQ(kDifferences.at(level.name)(), std::vector<std::string>());
}

}  // namespace
}  // namespace deimg

// The benchmarks' choice of level: the one that DEIMG_BENCH_LEVEL names, else the best.
#include <cstdio>
#include <cstdlib>

#include "pipeline/levels.h"

namespace deimg {

const Level& ChosenLevel() {
  static const Level& chosen = []() -> const Level& {
    const char* const wanted = std::getenv("DEIMG_BENCH_LEVEL");
    const Level& level = BestLevel(wanted != nullptr ? wanted : "");
    if (wanted == nullptr || std::string_view(level.name) == wanted) return level;
    std::fprintf(stderr, "this processor does not have the level wanted\n");
    std::exit(1);
  }();
  return chosen;
}

}  // namespace deimg

#include "pipeline/levels.h"

#ifndef DEIMG_HIGHEST_LEVEL
#define DEIMG_HIGHEST_LEVEL ""
#endif

namespace deimg {

const Level& ChosenLevel() {
  static const Level& chosen = BestLevel(DEIMG_HIGHEST_LEVEL);
  return chosen;
}

}  // namespace deimg

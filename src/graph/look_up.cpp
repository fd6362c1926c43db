// Compiled without vectorisation, see CMakeLists.txt.
#include "graph/look_up.h"

namespace deimg {
namespace {

template <typename Entry>
void LookUp(const Entry* __restrict table, Sample lowest, int width, MutableLine line) {
  for (Index x = 0; x < width; ++x) line[x] = table[Index{line[x]} - lowest];
}

}  // namespace

void LookUpLine(const std::int16_t* table, Sample lowest, int width, Sample* line) {
  LookUp(table, lowest, width, line);
}

void LookUpLine(const Sample* table, Sample lowest, int width, Sample* line) {
  LookUp(table, lowest, width, line);
}

}  // namespace deimg

// Compiled without vectorisation, see CMakeLists.txt.
#include "line/look_up.h"

namespace deimg {
namespace {

template <typename Entry>
void LookUp(const Entry* __restrict zero, int width, MutableLine line) {
  for (Index x = 0; x < width; ++x) line[x] = zero[Index{line[x]}];
}

}  // namespace

void LookUpLine(const std::int16_t* zero, int width, Sample* line) { LookUp(zero, width, line); }

void LookUpLine(const Sample* zero, int width, Sample* line) { LookUp(zero, width, line); }

void LookUpLine(const Sample* zero, const NarrowSample* in, int width, Sample* out) {
  for (Index x = 0; x < width; ++x) out[x] = zero[Index{in[x]}];
}

}  // namespace deimg

// Compiled without vectorisation, see CMakeLists.txt.
#include "line/look_up.h"

#include <cstring>

namespace deimg {

void LookUpLine(const NarrowSample* zero, const NarrowSample* in, int width, NarrowSample* out) {
  Index x = 0;
#ifndef __clang__
  // Eight entries are inserted into a register and stored at once; clang would assemble it from
  // eight registers.
  typedef NarrowSample Eight __attribute__((vector_size(8 * sizeof(NarrowSample))));
  for (; x + 8 <= width; x += 8) {
    const NarrowSample* const i = in + x;
    Eight entries = {zero[i[0]]};
    for (int k = 1; k < 8; ++k) entries[k] = zero[i[k]];
    std::memcpy(out + x, &entries, sizeof(entries));
  }
#endif
  for (; x < width; ++x) out[x] = zero[in[x]];
}

void LookUpLine(const Sample* zero, const Sample* in, int width, Sample* out) {
  for (Index x = 0; x < width; ++x) out[x] = zero[Index{in[x]}];
}

}  // namespace deimg

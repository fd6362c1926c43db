/// Result codes inside the library: a DEImgResult, or a host's own code passed through.
#ifndef DEIMG_BASE_RESULT_H
#define DEIMG_BASE_RESULT_H

#include <deimg/deimg.h>

#include <cstdint>

namespace deimg {

using Result = std::uint32_t;

}  // namespace deimg

/// Returns from the enclosing function with the expression's result unless that is DEIMG_OK.
#define DEIMG_RETURN_IF_FAILED(expression)                                                      \
  do {                                                                                          \
    if (const ::deimg::Result deimgResult = (expression); deimgResult != 0) return deimgResult; \
  } while (false)

#endif  // DEIMG_BASE_RESULT_H

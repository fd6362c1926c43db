#include <deimg/deimg.h>

#include "api/develop.h"
#include "api/thread_count.h"

uint32_t DEImg_DevelopM480(CallerStream* input, uint32_t flags, uint32_t format,
                           DevelopParams* params, CallerStream* output) {
  // Something that has to be aligned, so that the compiler aligns the stack of 32-bit hosts for it
  // and for all that is called (see CMakeLists.txt).
  alignas(16) const deimg::ThreadPlan threads = {.threads = deimg::ThreadCountOfEnvironment()};
  return deimg::Develop(input, flags, format, params, output, threads);
}

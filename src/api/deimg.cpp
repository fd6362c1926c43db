#include <deimg/deimg.h>

#include "api/develop.h"
#include "api/thread_count.h"

uint32_t DEImg_DevelopM480(CallerStream* input, uint32_t flags, uint32_t format,
                           DevelopParams* params, CallerStream* output) {
  return deimg::Develop(input, flags, format, params, output,
                        {.threads = deimg::ThreadCountOfEnvironment()});
}

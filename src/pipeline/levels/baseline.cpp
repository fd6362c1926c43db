// What every machine of the target can run: on x86 SSE2, elsewhere whatever the compiler assumes.
#define DEIMG_LEVEL baseline
#include "pipeline/level-inl.h"
#include "pipeline/level_common.h"

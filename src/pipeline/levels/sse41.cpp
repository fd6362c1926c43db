// SSE4.1: vectors of 16 bytes, with signs, and products, minima and maxima of 32 bits.
#define DEIMG_LEVEL sse41
#define DEIMG_VECTOR_BYTES 16
#define DEIMG_VECTOR_SIGNS
#include "pipeline/level_common.h"

DEIMG_BEGIN_TARGET("sse4.1")
#include "pipeline/level-inl.h"
DEIMG_END_TARGET

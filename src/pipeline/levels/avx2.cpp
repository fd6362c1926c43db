// AVX2: vectors of 32 bytes.
#define DEIMG_LEVEL avx2
#define DEIMG_VECTOR_BYTES 32
#include "pipeline/level_common.h"

DEIMG_BEGIN_TARGET("avx2,bmi,bmi2")
#include "pipeline/level-inl.h"
DEIMG_END_TARGET

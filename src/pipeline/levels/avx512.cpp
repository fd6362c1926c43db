// AVX-512: vectors of 64 bytes, which GCC has to be told to prefer.
#define DEIMG_LEVEL avx512
#define DEIMG_VECTOR_BYTES 64
#include "pipeline/level_common.h"

#if defined(__clang__)
DEIMG_BEGIN_TARGET("avx2,bmi,bmi2,avx512f,avx512bw,avx512dq,avx512vl")
#else
DEIMG_BEGIN_TARGET("avx2,bmi,bmi2,avx512f,avx512bw,avx512dq,avx512vl,prefer-vector-width=512")
#endif
#include "pipeline/level-inl.h"
DEIMG_END_TARGET

/// The vectors of an instruction level and the instructions that compilers do not find by
/// themselves, each under one name. Only this file knows them, and only lanes-inl.h uses them.
#ifndef DEIMG_LINE_VECTORS_INL_H
#define DEIMG_LINE_VECTORS_INL_H

#include "base/level.h"
#include "line/line.h"

// The bytes of the level's vectors, named by its source: 0 for none.
#ifndef DEIMG_VECTOR_BYTES
#ifdef __SSE2__
#define DEIMG_VECTOR_BYTES 16
#else
#define DEIMG_VECTOR_BYTES 0
#endif
#endif

// Vectors are passed in registers that depend on the level, so nothing that takes or returns one
// may stay a function of its own.
#define DEIMG_INLINE inline __attribute__((always_inline))

namespace deimg::DEIMG_LEVEL {

template <typename T>
inline constexpr int kLanes = sizeof(T) == sizeof(NarrowSample) && DEIMG_VECTOR_BYTES != 0
                                  ? DEIMG_VECTOR_BYTES / int{sizeof(NarrowSample)}
                                  : 1;

template <typename T, int n>
struct VectorOf {
  typedef T Type __attribute__((vector_size(n * sizeof(T))));
};
template <typename T>
struct VectorOf<T, 1> {
  using Type = T;
};

// GCC does not find minima and maxima in a choice between vectors.
#ifdef __clang__
#define DEIMG_MIN_MAX_OF_WORDS(bits)                       \
  DEIMG_INLINE static Words MinOfWords(Words a, Words b) { \
    return __builtin_elementwise_min(a, b);                \
  }                                                        \
  DEIMG_INLINE static Words MaxOfWords(Words a, Words b) { return __builtin_elementwise_max(a, b); }
#else
#define DEIMG_MIN_MAX_OF_WORDS(bits)                       \
  DEIMG_INLINE static Words MinOfWords(Words a, Words b) { \
    return __builtin_ia32_pminsw##bits(a, b);              \
  }                                                        \
  DEIMG_INLINE static Words MaxOfWords(Words a, Words b) { \
    return __builtin_ia32_pmaxsw##bits(a, b);              \
  }
#endif
#if DEIMG_VECTOR_BYTES == 16
using Words = VectorOf<NarrowSample, 8>::Type;
using Longs = VectorOf<Sample, 4>::Type;
DEIMG_MIN_MAX_OF_WORDS(128)

DEIMG_INLINE static Words UnpackLow(Words a, Words b) {
  return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}
DEIMG_INLINE static Words UnpackHigh(Words a, Words b) {
  return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}
DEIMG_INLINE static Words Pack(Longs low, Longs high) {
  return __builtin_ia32_packssdw128(low, high);
}
DEIMG_INLINE static Words InOrder(Words packed) { return packed; }
DEIMG_INLINE static Longs LowInOrder(Longs low, Longs) { return low; }
DEIMG_INLINE static Longs HighInOrder(Longs, Longs high) { return high; }
DEIMG_INLINE static auto PackBytes(Words words) { return __builtin_ia32_packuswb128(words, words); }
DEIMG_INLINE static Longs MultiplyAdd(Words a, Words b) { return __builtin_ia32_pmaddwd128(a, b); }
DEIMG_INLINE static Words MultiplyHigh(Words a, Words b) { return __builtin_ia32_pmulhw128(a, b); }
DEIMG_INLINE static Words MultiplyHighUnsigned(Words a, Words b) {
  return __builtin_ia32_pmulhuw128(a, b);
}
#elif DEIMG_VECTOR_BYTES == 32
using Words = VectorOf<NarrowSample, 16>::Type;
using Longs = VectorOf<Sample, 8>::Type;
DEIMG_MIN_MAX_OF_WORDS(256)

DEIMG_INLINE static Words UnpackLow(Words a, Words b) {
  return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 8, 24, 9, 25, 10, 26, 11, 27);
}
DEIMG_INLINE static Words UnpackHigh(Words a, Words b) {
  return __builtin_shufflevector(a, b, 4, 20, 5, 21, 6, 22, 7, 23, 12, 28, 13, 29, 14, 30, 15, 31);
}
DEIMG_INLINE static Words Pack(Longs low, Longs high) {
  return __builtin_ia32_packssdw256(low, high);
}
/// Packing works on halves of 16 bytes.
DEIMG_INLINE static Words InOrder(Words packed) {
  return __builtin_shufflevector(packed, packed, 0, 1, 2, 3, 8, 9, 10, 11, 4, 5, 6, 7, 12, 13, 14,
                                 15);
}
/// Between the order of unpacked vectors and that in memory, both ways.
DEIMG_INLINE static Longs LowInOrder(Longs first, Longs second) {
  return __builtin_shufflevector(first, second, 0, 1, 2, 3, 8, 9, 10, 11);
}
DEIMG_INLINE static Longs HighInOrder(Longs first, Longs second) {
  return __builtin_shufflevector(first, second, 4, 5, 6, 7, 12, 13, 14, 15);
}
DEIMG_INLINE static Words PackBytes(Words words) {
  typedef long long Quads __attribute__((vector_size(32)));
  const auto packed = reinterpret_cast<Quads>(__builtin_ia32_packuswb256(words, words));
  return reinterpret_cast<Words>(__builtin_shufflevector(packed, packed, 0, 2, 1, 3));
}
DEIMG_INLINE static Longs MultiplyAdd(Words a, Words b) { return __builtin_ia32_pmaddwd256(a, b); }
DEIMG_INLINE static Words MultiplyHigh(Words a, Words b) { return __builtin_ia32_pmulhw256(a, b); }
DEIMG_INLINE static Words MultiplyHighUnsigned(Words a, Words b) {
  return __builtin_ia32_pmulhuw256(a, b);
}
#endif
#undef DEIMG_MIN_MAX_OF_WORDS

// Magnitudes with the signs of others, 0 where those are 0; and magnitudes.
#if DEIMG_VECTOR_BYTES == 32
inline constexpr bool kHasSigns = true;
DEIMG_INLINE static Words WithSigns(Words magnitudes, Words signs) {
  return __builtin_ia32_psignw256(magnitudes, signs);
}
DEIMG_INLINE static Longs WithSigns(Longs magnitudes, Longs signs) {
  return __builtin_ia32_psignd256(magnitudes, signs);
}
#elif defined(DEIMG_VECTOR_SIGNS)
inline constexpr bool kHasSigns = true;
DEIMG_INLINE static Words WithSigns(Words magnitudes, Words signs) {
  return __builtin_ia32_psignw128(magnitudes, signs);
}
DEIMG_INLINE static Longs WithSigns(Longs magnitudes, Longs signs) {
  return __builtin_ia32_psignd128(magnitudes, signs);
}
#else
inline constexpr bool kHasSigns = false;
#if DEIMG_VECTOR_BYTES != 0
DEIMG_INLINE static Words Magnitudes(Words v) { return MaxOfWords(v, Words{} - v); }
DEIMG_INLINE static Longs Magnitudes(Longs v) {
  const Longs negative = v >> 31;  // all ones, or 0
  return (v ^ negative) - negative;
}
#endif
#endif

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_LINE_VECTORS_INL_H

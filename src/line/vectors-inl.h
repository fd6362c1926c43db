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
DEIMG_INLINE static Longs UnpackedLow(Longs first, Longs) { return first; }
DEIMG_INLINE static Longs UnpackedHigh(Longs, Longs second) { return second; }
DEIMG_INLINE static Longs FirstInOrder(Longs low, Longs) { return low; }
DEIMG_INLINE static Longs SecondInOrder(Longs, Longs high) { return high; }
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
/// Packing and unpacking work on parts of 16 bytes.
DEIMG_INLINE static Words InOrder(Words packed) {
  return __builtin_shufflevector(packed, packed, 0, 1, 2, 3, 8, 9, 10, 11, 4, 5, 6, 7, 12, 13, 14,
                                 15);
}
/// From the order of memory to that of unpacked vectors, and back: the same for two halves.
DEIMG_INLINE static Longs UnpackedLow(Longs first, Longs second) {
  return __builtin_shufflevector(first, second, 0, 1, 2, 3, 8, 9, 10, 11);
}
DEIMG_INLINE static Longs UnpackedHigh(Longs first, Longs second) {
  return __builtin_shufflevector(first, second, 4, 5, 6, 7, 12, 13, 14, 15);
}
DEIMG_INLINE static Longs FirstInOrder(Longs low, Longs high) { return UnpackedLow(low, high); }
DEIMG_INLINE static Longs SecondInOrder(Longs low, Longs high) { return UnpackedHigh(low, high); }
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
#elif DEIMG_VECTOR_BYTES == 64
using Words = VectorOf<NarrowSample, 32>::Type;
using Longs = VectorOf<Sample, 16>::Type;
typedef long long Quads __attribute__((vector_size(64)));
typedef char Bytes __attribute__((vector_size(64)));

// GCC has these instructions with a mask only.
#ifdef __clang__
#define DEIMG_UNMASKED(name, type, mask, ...) __builtin_ia32_##name##512(__VA_ARGS__)
DEIMG_MIN_MAX_OF_WORDS()
DEIMG_INLINE static Words Magnitudes(Words v) { return __builtin_elementwise_abs(v); }
DEIMG_INLINE static Longs Magnitudes(Longs v) { return __builtin_elementwise_abs(v); }
#else
#define DEIMG_UNMASKED(name, type, mask, ...) \
  __builtin_ia32_##name##512_mask(__VA_ARGS__, type{}, mask)
DEIMG_INLINE static Words MinOfWords(Words a, Words b) {
  return DEIMG_UNMASKED(pminsw, Words, 0xFFFFFFFFu, a, b);
}
DEIMG_INLINE static Words MaxOfWords(Words a, Words b) {
  return DEIMG_UNMASKED(pmaxsw, Words, 0xFFFFFFFFu, a, b);
}
DEIMG_INLINE static Words Magnitudes(Words v) {
  return DEIMG_UNMASKED(pabsw, Words, 0xFFFFFFFFu, v);
}
DEIMG_INLINE static Longs Magnitudes(Longs v) { return DEIMG_UNMASKED(pabsd, Longs, 0xFFFFu, v); }
#endif

DEIMG_INLINE static Words UnpackLow(Words a, Words b) {
  return __builtin_shufflevector(a, b, 0, 32, 1, 33, 2, 34, 3, 35, 8, 40, 9, 41, 10, 42, 11, 43, 16,
                                 48, 17, 49, 18, 50, 19, 51, 24, 56, 25, 57, 26, 58, 27, 59);
}
DEIMG_INLINE static Words UnpackHigh(Words a, Words b) {
  return __builtin_shufflevector(a, b, 4, 36, 5, 37, 6, 38, 7, 39, 12, 44, 13, 45, 14, 46, 15, 47,
                                 20, 52, 21, 53, 22, 54, 23, 55, 28, 60, 29, 61, 30, 62, 31, 63);
}
DEIMG_INLINE static Words Pack(Longs low, Longs high) {
  return DEIMG_UNMASKED(packssdw, Words, 0xFFFFFFFFu, low, high);
}
DEIMG_INLINE static Words InOrder(Words packed) {
  const auto quads = reinterpret_cast<Quads>(packed);
  return reinterpret_cast<Words>(__builtin_shufflevector(quads, quads, 0, 2, 4, 6, 1, 3, 5, 7));
}
DEIMG_INLINE static Longs UnpackedLow(Longs first, Longs second) {
  return __builtin_shufflevector(first, second, 0, 1, 2, 3, 8, 9, 10, 11, 16, 17, 18, 19, 24, 25,
                                 26, 27);
}
DEIMG_INLINE static Longs UnpackedHigh(Longs first, Longs second) {
  return __builtin_shufflevector(first, second, 4, 5, 6, 7, 12, 13, 14, 15, 20, 21, 22, 23, 28, 29,
                                 30, 31);
}
DEIMG_INLINE static Longs FirstInOrder(Longs low, Longs high) {
  return __builtin_shufflevector(low, high, 0, 1, 2, 3, 16, 17, 18, 19, 4, 5, 6, 7, 20, 21, 22, 23);
}
DEIMG_INLINE static Longs SecondInOrder(Longs low, Longs high) {
  return __builtin_shufflevector(low, high, 8, 9, 10, 11, 24, 25, 26, 27, 12, 13, 14, 15, 28, 29,
                                 30, 31);
}
DEIMG_INLINE static Words PackBytes(Words words) {
  const auto packed =
      reinterpret_cast<Quads>(DEIMG_UNMASKED(packuswb, Bytes, 0xFFFFFFFFFFFFFFFFu, words, words));
  return reinterpret_cast<Words>(__builtin_shufflevector(packed, packed, 0, 2, 4, 6, 0, 2, 4, 6));
}
DEIMG_INLINE static Longs MultiplyAdd(Words a, Words b) {
  return DEIMG_UNMASKED(pmaddwd, Longs, 0xFFFFu, a, b);
}
DEIMG_INLINE static Words MultiplyHigh(Words a, Words b) {
  return DEIMG_UNMASKED(pmulhw, Words, 0xFFFFFFFFu, a, b);
}
DEIMG_INLINE static Words MultiplyHighUnsigned(Words a, Words b) {
  return DEIMG_UNMASKED(pmulhuw, Words, 0xFFFFFFFFu, a, b);
}
#undef DEIMG_UNMASKED
#else
// Without vectors there is one lane, and none of these is called.
using Words = NarrowSample;
using Longs = Sample;
Words MinOfWords(Words a, Words b);
Words MaxOfWords(Words a, Words b);
Words UnpackLow(Words a, Words b);
Words UnpackHigh(Words a, Words b);
Words Pack(Longs low, Longs high);
Words InOrder(Words packed);
Longs UnpackedLow(Longs first, Longs second);
Longs UnpackedHigh(Longs first, Longs second);
Longs FirstInOrder(Longs low, Longs high);
Longs SecondInOrder(Longs low, Longs high);
Words PackBytes(Words words);
Longs MultiplyAdd(Words a, Words b);
Words MultiplyHigh(Words a, Words b);
Words MultiplyHighUnsigned(Words a, Words b);
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
#if DEIMG_VECTOR_BYTES == 16
DEIMG_INLINE static Words Magnitudes(Words v) { return MaxOfWords(v, Words{} - v); }
DEIMG_INLINE static Longs Magnitudes(Longs v) {
  const Longs negative = v >> 31;  // all ones, or 0
  return (v ^ negative) - negative;
}
#endif
#endif

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_LINE_VECTORS_INL_H

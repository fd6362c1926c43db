/// Low-passes along a line, symmetric and with a gain of 1.
///
/// At() gives the lanes around `in`. The sum of two samples has to fit into one.
#ifndef DEIMG_STAGES_COLOUR_SMOOTHING_INL_H
#define DEIMG_STAGES_COLOUR_SMOOTHING_INL_H

#include "line/lanes-inl.h"

namespace deimg::DEIMG_LEVEL {

template <int n, typename T>
DEIMG_INLINE static Lanes<T, n> PairAt(const T* in, Index distance) {
  return Load<n>(in - distance) + Load<n>(in + distance);
}

/// (4, 7, 18, 21, 28, 21, 18, 7, 4) / 128
struct Smoothed9 {
  static constexpr int kUnsmoothed = 4;  // columns on each side that lack neighbours
  template <int n, typename T>
  DEIMG_INLINE static Lanes<T, n> At(const T* in) {
    return Narrowed(Quotient<7>(DotPairs(PairAt<n>(in, 1), 21, PairAt<n>(in, 2), 18) +
                                DotPairs(PairAt<n>(in, 3), 7, PairAt<n>(in, 4), 4) +
                                DotPairs(Load<n>(in), 28, Lanes<T, n>::All(0), 0)));
  }
};

/// (3, 8, 13, 16, 13, 8, 3) / 64, left alone where the longer one would be.
struct Smoothed7 {
  static constexpr int kUnsmoothed = 4;
  template <int n, typename T>
  DEIMG_INLINE static Lanes<T, n> At(const T* in) {
    return Narrowed(Quotient<6>(DotPairs(PairAt<n>(in, 1), 13, PairAt<n>(in, 2), 8) +
                                DotPairs(PairAt<n>(in, 3), 3, Load<n>(in), 16)));
  }
};

struct Unsmoothed {
  template <int n, typename T>
  DEIMG_INLINE static Lanes<T, n> At(const T* in) {
    return Load<n>(in);
  }
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_SMOOTHING_INL_H

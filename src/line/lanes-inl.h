/// Neighbouring samples of a line at once, and the few operations that compilers do not find in
/// plain loops by themselves.
///
/// A kernel that uses them is a function of a column, called by ForColumns() with as many lanes as
/// the instruction level has for its samples: a vector of 16-bit samples where the level names the
/// size of its vectors, one sample everywhere else. With one lane every operation is the plain
/// formula, and the loop one that the compiler vectorises as it does others.
#ifndef DEIMG_LINE_LANES_INL_H
#define DEIMG_LINE_LANES_INL_H

#include <cstring>
#include <type_traits>

#include "line/arithmetic.h"
#include "line/vectors-inl.h"

namespace deimg::DEIMG_LEVEL {

// One sample's functions stand beside those of lanes.
using deimg::Abs;
using deimg::BySign;
using deimg::Clamp;
using deimg::Max;
using deimg::Min;

/// A condition in every lane.
template <typename T, int n>
struct Mask {
  std::conditional_t<n == 1, bool, typename VectorOf<T, n>::Type> v;
};

/// n values of type T. Arithmetic wraps.
template <typename T, int n>
struct Lanes {
  using Vector = typename VectorOf<T, n>::Type;
  Vector v;

  DEIMG_INLINE static Lanes All(T value) {
    if constexpr (n == 1) return {value};
    return {static_cast<Vector>(Vector{} + value)};
  }
};

#define DEIMG_LANES_OPERATOR(op)                                              \
  template <typename T, int n>                                                \
  DEIMG_INLINE static Lanes<T, n> operator op(Lanes<T, n> a, Lanes<T, n> b) { \
    return {static_cast<typename Lanes<T, n>::Vector>(a.v op b.v)};           \
  }
DEIMG_LANES_OPERATOR(+)
DEIMG_LANES_OPERATOR(-)
DEIMG_LANES_OPERATOR(*)
#undef DEIMG_LANES_OPERATOR

template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> operator*(Lanes<T, n> a, std::type_identity_t<T> b) {
  return a * Lanes<T, n>::All(b);
}
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> operator<<(Lanes<T, n> a, int bits) {
  return {static_cast<typename Lanes<T, n>::Vector>(a.v << bits)};
}
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> operator>>(Lanes<T, n> a, int bits) {
  return {static_cast<typename Lanes<T, n>::Vector>(a.v >> bits)};
}
template <typename T, int n>
DEIMG_INLINE static Mask<T, n> operator<(Lanes<T, n> a, Lanes<T, n> b) {
  return {a.v < b.v};
}

/// `yes` where the condition holds, else `no`.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> Select(Mask<T, n> condition, Lanes<T, n> yes, Lanes<T, n> no) {
  return {condition.v ? yes.v : no.v};
}
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> Min(Lanes<T, n> a, Lanes<T, n> b) {
  if constexpr (n == DEIMG_VECTOR_BYTES / sizeof(NarrowSample)) {
    return {MinOfWords(a.v, b.v)};
  } else {
    return Select(b < a, b, a);
  }
}
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> Max(Lanes<T, n> a, Lanes<T, n> b) {
  if constexpr (n == DEIMG_VECTOR_BYTES / sizeof(NarrowSample)) {
    return {MaxOfWords(a.v, b.v)};
  } else {
    return Select(a < b, b, a);
  }
}
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> Clamp(Lanes<T, n> v, Sample low, Sample high) {
  using L = Lanes<T, n>;
  return Min(Max(v, L::All(static_cast<T>(low))), L::All(static_cast<T>(high)));
}
/// A magnitude with the sign of v; where v is 0 it has to be 0, too.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> WithSignOf(Lanes<T, n> v, Lanes<T, n> magnitude) {
  if constexpr (kHasSigns && n > 1) return {WithSigns(magnitude.v, v.v)};
  const auto zero = Lanes<T, n>::All(0);
  return Select(v < zero, zero - magnitude, magnitude);
}
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> Abs(Lanes<T, n> v) {
  if constexpr (!kHasSigns && n > 1) return {Magnitudes(v.v)};
  return WithSignOf(v, v);
}

/// `odd` in odd columns, `even` in even ones, for lanes that start at column x: an even one where
/// there are several.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> ByColumnParity(Index x, Lanes<T, n> even, Lanes<T, n> odd) {
  if constexpr (n == 1) {
    return {ByParity<T>(static_cast<ColumnOf<T>>(x), even.v, odd.v)};
  } else {
    const Mask<T, n> isOdd = {reinterpret_cast<typename Lanes<T, n>::Vector>(
        typename VectorOf<Sample, n / 2>::Type{} + Sample{-65536})};
    return Select(isOdd, odd, even);
  }
}

/// n 32-bit values, made from lanes of type T: for narrow lanes in two vectors, whose order is that
/// in which vectors are unpacked.
template <typename T, int n>
struct Sums {
  static constexpr int kHalf = n == 1 ? 1 : n / 2;
  using Half = Lanes<Sample, kHalf>;
  Half low, high;

  DEIMG_INLINE static Sums All(Sample value) { return {Half::All(value), Half::All(value)}; }
};

template <typename T, int n>
DEIMG_INLINE static Sums<T, n> operator+(Sums<T, n> a, Sums<T, n> b) {
  return {a.low + b.low, a.high + b.high};
}
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> operator-(Sums<T, n> a, Sums<T, n> b) {
  return {a.low - b.low, a.high - b.high};
}
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> operator*(Sums<T, n> a, Sample factor) {
  return {a.low * factor, a.high * factor};
}
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> operator*(Sums<T, n> a, Sums<T, n> b) {
  return {a.low * b.low, a.high * b.high};
}
/// Truncated; the divisor is best a constant.
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> operator/(Sums<T, n> a, Sample divisor) {
  using Vector = typename Sums<T, n>::Half::Vector;
  return {{static_cast<Vector>(a.low.v / divisor)}, {static_cast<Vector>(a.high.v / divisor)}};
}
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> operator<<(Sums<T, n> a, int bits) {
  return {a.low << bits, a.high << bits};
}
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> operator>>(Sums<T, n> a, int bits) {
  return {a.low >> bits, a.high >> bits};
}
/// `yes` where a value is below 0, else `no`.
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> BySign(Sums<T, n> a, Sums<T, n> yes, Sums<T, n> no) {
  const auto zero = Sums<T, n>::Half::All(0);
  return {Select(a.low < zero, yes.low, no.low), Select(a.high < zero, yes.high, no.high)};
}

/// v / 2^bits, truncated toward zero.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> QuotientBy(Lanes<T, n> v, int bits) {
  using Vector = typename Lanes<T, n>::Vector;
  if constexpr (kHasSigns && n > 1) {
    using Unsigned = typename VectorOf<std::make_unsigned_t<T>, n>::Type;
    const auto magnitude = reinterpret_cast<Unsigned>(Abs(v).v) >> bits;
    return WithSignOf(v, Lanes<T, n>{reinterpret_cast<Vector>(magnitude)});
  }
  const auto negative = v >> (8 * static_cast<int>(sizeof(T)) - 1);  // all ones, or 0
  const auto rest = Lanes<T, n>::All(static_cast<T>((1 << bits) - 1));
  return (v + Lanes<T, n>{static_cast<Vector>(negative.v & rest.v)}) >> bits;
}
template <int bits, typename T, int n>
DEIMG_INLINE static Lanes<T, n> Quotient(Lanes<T, n> v) {
  return QuotientBy(v, bits);
}
template <int bits, typename T, int n>
DEIMG_INLINE static Sums<T, n> Quotient(Sums<T, n> v) {
  return {Quotient<bits>(v.low), Quotient<bits>(v.high)};
}

/// The values as 32-bit ones.
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> Widened(Lanes<T, n> a) {
  if constexpr (n == 1) {
    return {{a.v}, {a.v}};
  } else {
    // Unpacked into the upper halves of the wider lanes, then moved down.
    return Sums<T, n>{{reinterpret_cast<Longs>(UnpackLow(Words{}, a.v))},
                      {reinterpret_cast<Longs>(UnpackHigh(Words{}, a.v))}} >>
           16;
  }
}

/// a x wa + b x wb: two products a lane in one instruction.
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> DotPairs(Lanes<T, n> a, Sample wa, Lanes<T, n> b, Sample wb) {
  if constexpr (n == 1) {
    const Sample sum = a.v * wa + b.v * wb;
    return {{sum}, {sum}};
  } else {
    const auto pair = static_cast<Sample>((static_cast<unsigned>(wb) << 16) | (wa & 0xFFFF));
    const auto weights = reinterpret_cast<Words>(Longs{} + pair);
    return {{MultiplyAdd(UnpackLow(a.v, b.v), weights)},
            {MultiplyAdd(UnpackHigh(a.v, b.v), weights)}};
  }
}

/// a x b, and a x wa + b x b.
template <typename T, int n>
DEIMG_INLINE static Sums<T, n> Products(Lanes<T, n> a, Lanes<T, n> b) {
  if constexpr (n == 1) {
    return {{a.v * b.v}, {a.v * b.v}};
  } else {
    const Words low = a.v * b.v, high = MultiplyHigh(a.v, b.v);
    return {{reinterpret_cast<Longs>(UnpackLow(low, high))},
            {reinterpret_cast<Longs>(UnpackHigh(low, high))}};
  }
}

/// The upper 16 bits of a x b, rounded down; for narrow samples only.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> ProductHigh(Lanes<T, n> a, Lanes<T, n> b) {
  if constexpr (n == 1) {
    return {static_cast<T>((a.v * b.v) >> 16)};
  } else {
    return {MultiplyHigh(a.v, b.v)};
  }
}

/// a x b / 2^bits, truncated, where b is not negative and neither |a| x 2^up nor b x 2^(16 - bits -
/// up) leaves 16 bits: for narrow samples the upper half of a product of magnitudes.
template <int bits, int up, typename T, int n>
DEIMG_INLINE static Lanes<T, n> ScaledBy(Lanes<T, n> a, Lanes<T, n> b) {
  if constexpr (n == 1) {
    return {static_cast<T>(a.v * b.v / (1 << bits))};
  } else {
    const Words high = MultiplyHighUnsigned((Abs(a) << up).v, (b << (16 - bits - up)).v);
    return WithSignOf(a, Lanes<T, n>{high});
  }
}

/// Back to samples of type T; narrow ones are clipped to what they hold.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> Narrowed(Sums<T, n> sums) {
  if constexpr (n == 1) {
    return {Nearest<T>(sums.low.v)};
  } else {
    return {Pack(sums.low.v, sums.high.v)};
  }
}

/// The same for values in the order of memory, a half each; both are the same with one lane.
template <typename T, int n>
DEIMG_INLINE static Lanes<T, n> NarrowedInOrder(typename Sums<T, n>::Half first,
                                                typename Sums<T, n>::Half second) {
  if constexpr (n == 1) {
    return {Nearest<T>(first.v)};
  } else {
    return {InOrder(Pack(first.v, second.v))};
  }
}

template <int n, typename T>
DEIMG_INLINE static Lanes<T, n> Load(const T* samples) {
  Lanes<T, n> lanes;
  std::memcpy(&lanes.v, samples, sizeof(lanes.v));
  return lanes;
}
template <typename T, int n>
DEIMG_INLINE static void Store(T* samples, Lanes<T, n> lanes) {
  std::memcpy(samples, &lanes.v, sizeof(lanes.v));
}

/// n 32-bit samples as sums of lanes of type T.
template <int n, typename T>
DEIMG_INLINE static Sums<T, n> LoadSums(const Sample* samples) {
  if constexpr (n == 1) {
    return {{*samples}, {*samples}};
  } else {
    const Longs first = Load<n / 2>(samples).v, second = Load<n / 2>(samples + n / 2).v;
    return {{UnpackedLow(first, second)}, {UnpackedHigh(first, second)}};
  }
}
template <typename T, int n>
DEIMG_INLINE static void StoreSums(Sample* samples, Sums<T, n> sums) {
  if constexpr (n == 1) {
    *samples = sums.low.v;
  } else {
    Store(samples, Lanes<Sample, n / 2>{FirstInOrder(sums.low.v, sums.high.v)});
    Store(samples + n / 2, Lanes<Sample, n / 2>{SecondInOrder(sums.low.v, sums.high.v)});
  }
}

/// Samples of one byte, clipped to 0 to 255.
template <typename T, int n>
DEIMG_INLINE static void StoreBytes(std::uint8_t* bytes, Lanes<T, n> lanes) {
  if constexpr (n == 1) {
    *bytes = static_cast<std::uint8_t>(Clamp(lanes, 0, 255).v);
  } else {
    const auto packed = PackBytes(lanes.v);
    std::memcpy(bytes, &packed, n);
  }
}

/// Samples of two bytes, clipped to 0 to 65535.
template <typename T, int n>
DEIMG_INLINE static void StoreUnsigned(std::uint16_t* samples, Sums<T, n> sums) {
  if constexpr (n == 1) {
    *samples = static_cast<std::uint16_t>(Clamp(sums.low.v, 0, 65535));
  } else {
    // Packing clips to signed samples, so they are moved there and back.
    constexpr Sample kMiddle = 32768;
    const auto packed = Narrowed(sums - Sums<T, n>::All(kMiddle));
    const auto moved = packed + Lanes<T, n>::All(static_cast<T>(kMiddle));
    std::memcpy(samples, &moved.v, sizeof(moved.v));
  }
}

template <int n>
using LaneCount = std::integral_constant<int, n>;

/// Calls f(LaneCount<n>, x) so that every column from `first` to before `end` lies within n columns
/// from some x. The last call may overlap the one before it: f must not read what it writes. What f
/// needs it holds by value, so that stores cannot change it.
template <typename T, typename Function>
DEIMG_INLINE static void ForColumns(Index first, Index end, Function f) {
  constexpr int n = kLanes<T>;
  if constexpr (n > 1) {
    if (end - first >= n) {
      for (Index x = first; x < end - n; x += n) f(LaneCount<n>(), x);
      f(LaneCount<n>(), end - n);
      return;
    }
  }
  for (Index x = first; x < end; ++x) f(LaneCount<1>(), x);
}

/// The same for loops over 32-bit samples beside narrow ones, as many at a time as a vector has.
template <typename T, typename Function>
DEIMG_INLINE static void ForHalves(Index first, Index end, Function f) {
  ForColumns<T>(first, end, [=]<int n>(LaneCount<n>, Index x) {
    constexpr int kHalf = Sums<T, n>::kHalf;
    f(LaneCount<kHalf>(), x);
    if constexpr (n > 1) f(LaneCount<kHalf>(), x + kHalf);
  });
}

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_LINE_LANES_INL_H

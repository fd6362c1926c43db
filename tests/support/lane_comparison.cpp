// The operations in which an instruction level's lanes differ from one lane. Compiled once a level,
// which DEIMG_LEVEL and DEIMG_TARGET name, for lanes_test.cpp.
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "pipeline/level_common.h"

#ifdef DEIMG_TARGET
DEIMG_BEGIN_TARGET(DEIMG_TARGET)
#endif
#include "line/lanes-inl.h"

namespace deimg::DEIMG_LEVEL {

extern std::vector<std::string> LaneDifferences();

namespace {

constexpr int n = kLanes<NarrowSample>;
constexpr int kCount = 1 << 16;
using Narrow = std::vector<NarrowSample>;

/// A line with every narrow sample, beside one that changes from pass to pass.
struct Operands {
  Narrow all = Narrow(kCount), other = Narrow(kCount);
  std::vector<Sample> wide = std::vector<Sample>(kCount);
};

/// operation<n>(x, out) computes n columns from x on and stores them at `out`.
template <typename Out, typename Operation>
bool Differ(Operation operation) {
  std::vector<Out> expected(kCount), got(kCount);
  for (Index x = 0; x < kCount; ++x) operation(LaneCount<1>(), x, expected.data() + x);
  for (Index x = 0; x < kCount; x += n) operation(LaneCount<n>(), x, got.data() + x);
  return expected != got;
}

#define DEIMG_COMPARE(Out, ...)                                                 \
  if (Differ<Out>([=]<int n>(LaneCount<n>, Index x, Out* out) {                 \
        const auto a = Load<n>(all + x), b = Load<n>(other + x);                \
        const auto s = LoadSums<n, NarrowSample>(wide + x);                     \
        const auto constant = [](int value) {                                   \
          return Lanes<NarrowSample, n>::All(static_cast<NarrowSample>(value)); \
        };                                                                      \
        static_cast<void>(a), static_cast<void>(b), static_cast<void>(s);       \
        static_cast<void>(constant);                                            \
        __VA_ARGS__;                                                            \
      })) {                                                                     \
    differing.emplace_back(#__VA_ARGS__);                                       \
  }

void Compare(const Operands& operands, std::vector<std::string>& differing) {
  const NarrowSample* const all = operands.all.data();
  const NarrowSample* const other = operands.other.data();
  const Sample* const wide = operands.wide.data();
  DEIMG_COMPARE(NarrowSample, Store(out, a + b));
  DEIMG_COMPARE(NarrowSample, Store(out, a - b));
  DEIMG_COMPARE(NarrowSample, Store(out, a * b));
  DEIMG_COMPARE(NarrowSample, Store(out, (a * NarrowSample{-77}) + (b << 3) + (a >> 5)));
  DEIMG_COMPARE(NarrowSample, Store(out, Min(a, b)));
  DEIMG_COMPARE(NarrowSample, Store(out, Max(a, b)));
  DEIMG_COMPARE(NarrowSample, Store(out, Select(a < b, b, constant(3))));
  DEIMG_COMPARE(NarrowSample, Store(out, Clamp(a, -300, 29000)));
  DEIMG_COMPARE(NarrowSample, Store(out, Abs(a)));
  DEIMG_COMPARE(NarrowSample, Store(out, WithSignOf(a, Select(constant(0) < Abs(a), b, a))));
  DEIMG_COMPARE(NarrowSample, Store(out, ByColumnParity(x, a, b)));
  DEIMG_COMPARE(NarrowSample, Store(out, Quotient<1>(a)));
  DEIMG_COMPARE(NarrowSample, Store(out, Quotient<6>(a)));
  DEIMG_COMPARE(NarrowSample, Store(out, Quotient<14>(a)));
  DEIMG_COMPARE(NarrowSample, Store(out, ProductHigh(a, b)));
  // As far as it may go: |a| x 2^3 below 2^16, and |a| x 2^4.
  DEIMG_COMPARE(NarrowSample, Store(out, ScaledBy<7, 3>(Clamp(a >> 1, -8191, 8191), Abs(b >> 6))));
  DEIMG_COMPARE(NarrowSample, Store(out, ScaledBy<10, 4>(Clamp(a, -4095, 4095), Abs(b >> 2))));
  DEIMG_COMPARE(NarrowSample, Store(out, Narrowed(s)));
  DEIMG_COMPARE(NarrowSample, Store(out, Narrowed(Quotient<9>(s))));
  DEIMG_COMPARE(std::uint8_t, StoreBytes(out, a));
  DEIMG_COMPARE(std::uint16_t, StoreUnsigned(out, s >> 14));
  DEIMG_COMPARE(Sample, StoreSums(out, Widened(a)));
  DEIMG_COMPARE(Sample, StoreSums(out, Products(a, b)));
  DEIMG_COMPARE(Sample, StoreSums(out, DotPairs(a, 32767, b, -32768)));
  DEIMG_COMPARE(Sample, StoreSums(out, DotPairs(a, -32768, b, -32768)));
  DEIMG_COMPARE(Sample, StoreSums(out, DotPairs(a, 28, b, 17) - (s << 2) + (s >> 3)));
  DEIMG_COMPARE(Sample, StoreSums(out, s * Products(a, b) + s * 1814));
  DEIMG_COMPARE(Sample, StoreSums(out, BySign(s, s / 8, s + s.All(7))));
  DEIMG_COMPARE(Sample, StoreSums(out, Quotient<3>(s)));
  DEIMG_COMPARE(
      NarrowSample, constexpr int kHalf = Sums<NarrowSample, n>::kHalf;
      const auto half = [&](Index at) { return QuotientBy(Load<kHalf>(wide + at), 11); };
      Store(out, NarrowedInOrder<NarrowSample, n>(half(x), half(x + n - kHalf))));
  // Overlapping ends, and lines shorter than the lanes.
  for (const Index end : {Index{3}, Index{n - 1}, Index{n}, Index{n + 1}, Index{3 * n - 2}}) {
    Narrow copied(static_cast<std::size_t>(4 * n));
    std::vector<Sample> widened(copied.size());
    ForColumns<NarrowSample>(2, end, [=, to = copied.data()]<int n>(LaneCount<n>, Index x) {
      Store(to + x, Load<n>(all + x));
    });
    ForHalves<NarrowSample>(2, end, [=, to = widened.data()]<int n>(LaneCount<n>, Index x) {
      Store(to + x, Load<n>(wide + x));
    });
    for (Index x = 0; x < 4 * n; ++x) {
      const bool inside = x >= 2 && x < end;
      if (copied[static_cast<std::size_t>(x)] != (inside ? all[x] : 0) ||
          widened[static_cast<std::size_t>(x)] != (inside ? wide[x] : 0)) {
        differing.push_back("columns 2 to " + std::to_string(end));
      }
    }
  }
}

}  // namespace

std::vector<std::string> LaneDifferences() {
  Operands operands;
  std::mt19937 random(1);
  for (int i = 0; i < kCount; ++i) {
    operands.all[static_cast<std::size_t>(i)] = static_cast<NarrowSample>(i);
  }
  std::vector<std::string> differing;
  for (const int constant : {-32768, -32767, -1, 0, 1, 2, 255, 256, 32766, 32767, 40000, 40001}) {
    for (std::size_t i = 0; i < kCount && differing.empty(); ++i) {
      const auto any = static_cast<std::uint32_t>(random());
      const bool isConstant = constant < 40000;
      operands.other[i] = static_cast<NarrowSample>(isConstant ? constant : static_cast<int>(any));
      operands.wide[i] = static_cast<Sample>(any) >> (isConstant ? 12 : 0);
    }
    Compare(operands, differing);
  }
  return differing;
}

}  // namespace deimg::DEIMG_LEVEL
#ifdef DEIMG_TARGET
DEIMG_END_TARGET
#endif

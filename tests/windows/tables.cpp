// Prints a digest of every look-up table and curve, for comparison between machines: all exposure
// adjustments, and the curves over their ranges of parameters.
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <vector>

#include "stages/colour/chroma_suppress.h"
#include "stages/colour/color_system_proc.h"
#include "stages/colour/white_balance.h"
#include "stages/luma/apc_curve.h"
#if defined(_WIN32) && defined(__i386__)
#include <float.h>
#endif

namespace {

class Digest {
 public:
  template <typename T>
  void Add(const T* values, int count) {
    for (int i = 0; i < count; ++i) Add(values[i]);
  }
  void Add(std::int64_t value) {
    hash_ = (hash_ ^ static_cast<std::uint64_t>(value)) * 0x100000001B3ull;
    hash_ ^= hash_ >> 29;
  }
  void Print(const char* name, int number) const {
    std::printf("%s %d %08x%08x\n", name, number, static_cast<unsigned>(hash_ >> 32),
                static_cast<unsigned>(hash_));
  }

 private:
  std::uint64_t hash_ = 0xCBF29CE484222325ull;
};

// The same numbers everywhere.
std::uint32_t state = 1;
int Random(int below) {
  state = state * 1664525u + 1013904223u;
  return static_cast<int>((state >> 8) % static_cast<std::uint32_t>(below));
}
std::int16_t Random16(int lowest, int highest) {
  return static_cast<std::int16_t>(lowest + Random(highest - lowest + 1));
}
std::uint16_t RandomU16(int below) { return static_cast<std::uint16_t>(Random(below)); }

constexpr int kRounds = 2000;

}  // namespace

namespace deimg {
namespace {

void PrintExposure() {
  const std::uint8_t bytes[TuningBlock::kSize] = {};
  const DevelopmentTables tables;
  for (int adjust = -20; adjust <= 20; ++adjust) {
    DevelopSettings settings;
    settings.exposureAdjust = static_cast<std::int16_t>(adjust);
    Digest digest;
    for (std::int32_t green = 700; green < 4000; green += 7) {
      settings.wbGains = {1024, green, green + 1, 1024};
      const WhiteBalance<Sample> stage(
          {ChosenKernels(), settings, tables, TuningBlock(bytes), 16, 16});
      digest.Add(stage.clipLevel());
      if (adjust != 0) digest.Add(stage.exposureTable(), kExposureTableSize);
    }
    digest.Print("exposure", adjust);
  }
}

void PrintCurves() {
  Digest apc, suppression, gain;
  for (int round = 0; round < kRounds; ++round) {
    ApcCurveParams params{};
    params[0] = Random16(0, 255);
    params[1] = Random16(0, 255);
    for (std::size_t i = 2; i < 5; ++i) params[i] = Random16(0, 11);
    for (std::size_t i = 5; i < 8; ++i) params[i] = Random16(-300, 300);
    std::vector<Sample> table(kSuppressionCurveSize);
    std::iota(table.begin(), table.end(), -512);
    std::vector<Sample> curve(table.size());
    ChosenKernels().apcCurveLine(table.data(), MakeApcCurve(params, 1024, 0), 1024, curve.data());
    apc.Add(curve.data(), 1024);

    suppression.Add(BuildSuppressionCurve(
        {RandomU16(64), RandomU16(4), RandomU16(12), RandomU16(12), RandomU16(64), RandomU16(128),
         RandomU16(2), RandomU16(1024), RandomU16(64)},
        table.data()));
    suppression.Add(table.data(), kSuppressionCurveSize);

    BuildChromaGainTable({Random16(0, 255), Random16(0, 255), Random16(0, 255), Random16(-64, 64),
                          Random16(-64, 64), Random16(0, 255), Random16(-64, 64)},
                         table.data());
    gain.Add(table.data(), ColorSystemProc::kChromaGainTableSize);
  }
  apc.Print("aperture", kRounds);
  suppression.Print("suppression", kRounds);
  gain.Print("chroma-gain", kRounds);
}

}  // namespace
}  // namespace deimg

int main() {
#if defined(_WIN32) && defined(__i386__)
  _controlfp(_PC_24, _MCW_PC);  // as hosts that draw may leave it
#endif
  deimg::PrintExposure();
  deimg::PrintCurves();
  return 0;
}

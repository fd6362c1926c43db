// Prints a digest of every look-up table and curve, for comparison between machines: all exposure
// adjustments, and the curves over their ranges of parameters.
#include <bit>
#include <cstdint>
#include <cstdio>
#include <random>

#include "pipeline/levels.h"
#include "stages/colour/chroma_gain_curve.h"
#include "stages/colour/suppression_curve.h"
#include "storage/memory_stream.h"
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

constexpr int kRounds = 2000;

}  // namespace

namespace deimg {
namespace {

/// Every raw sample through every exposure adjustment.
void PrintExposure() {
  ImageGeometry geometry{};
  geometry.sensorWidth = 4096;
  geometry.sensorHeight = 2;
  const MemoryStream plane = MemoryStream::Make(2 * 2 * 4096);
  for (int i = 0; i < 2 * 4096; ++i) {
    plane.memory()[2 * i] = static_cast<std::uint8_t>(i);
    plane.memory()[2 * i + 1] = static_cast<std::uint8_t>(i % 4096 >> 8);
  }
  const DevelopmentTables tables;
  const TuningBlock tuning{};
  for (int adjust = -20; adjust <= 20; ++adjust) {
    DevelopSettings settings;
    settings.exposureAdjust = static_cast<std::int16_t>(adjust);
    Digest digest;
    for (std::int32_t green = 700; green < 4000; green += 300) {
      settings.wbGains = {1024, green, green + 1, 1024};
      const GraphOwner graph =
          ChosenLevel().code.makeWideGraph(*plane.get(), {settings, tables, tuning, geometry}, 1);
      ComponentX& stage = *graph->Find(TypeId::kWhiteBalance);
      digest.Add(stage.Start(0));
      digest.Add(stage.GetLine(0, 0), stage.width());
    }
    digest.Print("exposure", adjust);
  }
}

void PrintCurves() {
  Digest suppression, gain;
  std::mt19937 random(1);
  const auto below = [&](unsigned limit) { return static_cast<std::uint16_t>(random() % limit); };
  Sample table[kSuppressionCurveSize] = {};
  for (int round = 0; round < kRounds; ++round) {
    suppression.Add(BuildSuppressionCurve({0, below(4), below(12), below(12), below(64), below(128),
                                           below(2), below(1024), below(64)},
                                          table));
    suppression.Add(table, kSuppressionCurveSize);
    std::array<std::int16_t, 7> f{};
    for (std::int16_t& v : f) v = static_cast<std::int16_t>(below(320) - 64);
    BuildChromaGainTable(f, table);
    gain.Add(table, kChromaGainTableSize);
  }
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

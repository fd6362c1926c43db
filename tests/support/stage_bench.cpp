#include "support/stage_bench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <set>

#include "base/byte_order.h"
#include "rawfile/random_camera.h"

#if defined(__SANITIZE_ADDRESS__)
#define DEIMG_POISON
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define DEIMG_POISON
#endif
#endif
#ifdef DEIMG_POISON
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#endif

namespace deimg::testing {
namespace {

constexpr int kHeight = 24;
constexpr int kGuardLines = 16;  // that every ring has more than its readers need
constexpr std::uint8_t kCanary = 0xA5;

#ifdef DEIMG_POISON
const char* computing = "";
void SayWhich() { std::fprintf(stderr, "the stage at work was %s\n", computing); }
#endif

/// A line of a ring as bytes: what holds samples, and what only pads.
struct LineBytes {
  std::uint8_t* samples;
  std::size_t used;
  std::size_t all;
};

LineBytes BytesOf(const ComponentPort& port, int offset, std::size_t sampleBytes) {
  const auto width = static_cast<std::size_t>(port.width());
  return {port.Line<std::uint8_t>(offset), width * sampleBytes,
          (width + 15) / 16 * 16 * sizeof(Sample)};
}

}  // namespace

StageBench::StageBench(int width, unsigned seed) : random(seed) {
  geometry.sensorWidth = static_cast<std::uint16_t>(width);
  geometry.sensorHeight = kHeight;
  geometry.areaWidth = geometry.sensorWidth;
  geometry.areaHeight = kHeight;
  plane = MemoryStream::Make(2ull * geometry.sensorWidth * kHeight);
  auto* const raw = reinterpret_cast<std::uint16_t*>(plane.memory());
  for (int i = 0; i < width * kHeight; ++i) {
    raw[i] = static_cast<std::uint16_t>(Random(0, 9) == 0 ? 65535 : Random(0, 4095));
  }
  ToLittleEndian(raw, static_cast<std::size_t>(width * kHeight));
}

void StageBench::Randomise(bool hostile) {
  const auto any = [&] { return static_cast<std::uint16_t>(random()); };
  const auto small = [&](int low, int high) {
    return static_cast<std::int16_t>(Random(low, high));
  };
  tuning = rawfile::RandomCamera(random(), {.maxWidth = 16, .maxHeight = 8}).properties.tuning;
  if (hostile) {
    auto words = std::bit_cast<TuningBlock::Words>(tuning);
    for (std::uint16_t& word : words) {
      if (Random(0, 11) == 0) word = any();
    }
    tuning = std::bit_cast<TuningBlock>(words);
  }
  const auto level = [&] { return small(-1, 1); };
  const int set = Random(0, 3);
  settings = {};
  settings.matrixSelect = static_cast<std::uint16_t>(std::max(Random(-4, 2), 0));
  settings.chromaMedian = Random(0, 3) == 0 ? std::int16_t{-1} : std::int16_t{0};
  settings.processingSet = static_cast<std::int16_t>(set == 3 ? 3 : set - 1);
  settings.setIndex = static_cast<std::size_t>(set);
  settings.toneLevel = level();
  settings.toneIndex = static_cast<std::size_t>(settings.toneLevel + 1);
  settings.isoClass = static_cast<std::size_t>(Random(0, 4));
  settings.exposureAdjust = small(-1, 1) == 0 ? small(-20, 20) : std::int16_t{0};
  for (std::int32_t& gain : settings.wbGains) gain = Random(0, hostile ? 32767 : 4000);
  const auto fill = [&](auto& values, int low, int high) {
    for (auto& v : values) v = hostile ? static_cast<std::int16_t>(any()) : small(low, high);
  };
  tables = {};
  fill(tables.colourMatrix, -1200, 1200);
  fill(tables.colourOffsets, -40, 40);
  fill(tables.colourGains, 0, 200);
  fill(tables.luminanceWeights, 0, 250);
  tables.chromaGainCb = small(60, 200);
  tables.chromaGainCr = hostile ? static_cast<std::int16_t>(any()) : small(60, 200);
}

void StageBench::StartAnywhere(const Level& level, bool hostile, bool narrow, int line) {
  narrow_ = narrow;
  const auto make = narrow ? level.code.makeNarrowGraph : level.code.makeWideGraph;
  Result result;
  do {  // until no stage refuses its settings
    Randomise(hostile);
    if (!narrow && hostile) {
      for (std::int32_t& gain : settings.wbGains) gain = static_cast<std::int32_t>(random());
    }
    graph_ = make(*plane.get(), {settings, tables, tuning, geometry}, 1 + Random(0, 1));
    Find(TypeId::kLastStageRgb).ComputeContext(kGuardLines);
    result = Find(TypeId::kLastStageRgb).Start(line);
  } while (hostile && result != DEIMG_OK);
  ASSERT_EQ(result, DEIMG_OK);
}

bool StageBench::IsNarrow(const ComponentX& component) const {
  static const std::set<TypeId> kMosaic = {TypeId::kWhiteBalance, TypeId::kVHDiff,
                                           TypeId::kHokanVH,      TypeId::kHokanCircuit,
                                           TypeId::kMedianCrCb,   TypeId::kAFilterHokanLpf};
  return narrow_ && kMosaic.contains(component.typeId());
}

/// Within what the component's ports can hold where they are narrow, anything elsewhere.
Sample StageBench::RandomSample(const ComponentX& component) {
  const bool mosaic = component.typeId() == TypeId::kWhiteBalance;
  const bool planes = component.typeId() == TypeId::kHokanVH;
  const bool greens = component.typeId() == TypeId::kAFilterHokanLpf;
  const int high = mosaic ? 4095 : greens ? 8190 : 16380;
  const int low = mosaic || planes || greens ? 0 : -16380;
  const unsigned kind = random() % 8;
  if (kind == 0) return high;
  if (kind == 1) return low;
  if (!IsNarrow(component) && kind == 2) return static_cast<Sample>(random() | 1);
  if (!IsNarrow(component) && kind == 3) return Random(-300000, 300000);
  return Random(low, high);
}

/// Calls function(component, port, offset) for every line of the inputs in the window, or for every
/// one outside it.
template <typename Function>
void StageBench::ForEachInputLine(ComponentX& stage, bool inside, Function function) const {
  for (ComponentX* input : stage.inputs()) {
    for (int port = 0; port < input->portCount(); ++port) {
      if (input->port(port)->Line(0) == nullptr) continue;  // the source has no rings
      for (int o = input->runFirst(); o <= input->runLast(); ++o) {
        if ((std::abs(o) <= stage.border() / 2) == inside) function(*input, *input->port(port), o);
      }
    }
  }
}

void StageBench::FillInputs(ComponentX& stage, bool inside) {
  ForEachInputLine(stage, inside, [&](const ComponentX& input, const ComponentPort& port, int o) {
    for (int x = 0; x < input.width(); ++x) {
      const Sample value = RandomSample(input);
      if (IsNarrow(input)) {
        port.Line<NarrowSample>(o)[x] = static_cast<NarrowSample>(value);
      } else {
        port.Line(o)[x] = value;
      }
    }
  });
}

Samples StageBench::Line(const ComponentX& component, int port, int offset) const {
  const auto width = static_cast<std::size_t>(component.width());
  const auto copy = [&](const auto* line) { return Samples(line, line + width); };
  if (component.typeId() == TypeId::kSourceStreamReader) {
    return copy(component.GetLine<std::uint16_t>(offset, port));
  }
  if (component.typeId() == TypeId::kLastStageRgb) {
    if (component.sampleBytes() == 1) return copy(component.GetLine<std::uint8_t>(offset, port));
    const auto* const line = component.GetLine<std::uint16_t>(offset, port);
    std::vector<std::uint16_t> rgb(line, line + width);
    ToLittleEndian(rgb.data(), rgb.size());  // and back, which is the same
    return copy(rgb.data());
  }
  return IsNarrow(component) ? copy(component.GetLine<NarrowSample>(offset, port))
                             : copy(component.GetLine(offset, port));
}

void StageBench::Compute(ComponentX& stage) {
  std::vector<std::vector<std::uint8_t>> before;
  std::vector<std::pair<LineBytes, int>> own;
  const std::size_t ownBytes = IsNarrow(stage) ? sizeof(NarrowSample) : sizeof(Sample);
  for (int port = 0; port < stage.portCount(); ++port) {
    for (int o = stage.runFirst(); o <= stage.runLast(); ++o) {
      own.emplace_back(BytesOf(*stage.port(port), o, ownBytes), o);
      const LineBytes line = own.back().first;
      std::memset(line.samples + line.used, kCanary, line.all - line.used);
      before.emplace_back(line.samples, line.samples + line.all);
    }
  }
#ifdef DEIMG_POISON
  computing = stage.name();
  __sanitizer_set_death_callback(SayWhich);
  const auto bytes = [&](const ComponentX& input, const ComponentPort& port, int o) {
    return BytesOf(port, o, IsNarrow(input) ? sizeof(NarrowSample) : sizeof(Sample));
  };
  ForEachInputLine(stage, false, [&](const ComponentX& input, const ComponentPort& port, int o) {
    __asan_poison_memory_region(port.Line<std::uint8_t>(o), bytes(input, port, o).all);
  });
#endif
  ASSERT_EQ(stage.Run(0, 0), DEIMG_OK);
#ifdef DEIMG_POISON
  ForEachInputLine(stage, false, [&](const ComponentX& input, const ComponentPort& port, int o) {
    __asan_unpoison_memory_region(port.Line<std::uint8_t>(o), bytes(input, port, o).all);
  });
#endif
  for (std::size_t i = 0; i < own.size(); ++i) {
    const auto& [line, offset] = own[i];
    const std::size_t kept = offset == 0 ? line.used : 0;  // the current line itself may change
    ASSERT_EQ(std::memcmp(line.samples + kept, before[i].data() + kept, line.all - kept), 0)
        << stage.name() << " writes beside its line, at offset " << offset;
  }
}

}  // namespace deimg::testing

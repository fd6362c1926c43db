#include "support/stage_bench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>

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

LineBytes BytesOf(const ComponentPort& port, int offset) {
  const auto used = static_cast<std::size_t>(port.width() * port.sampleBytes());
  return {port.Line<std::uint8_t>(offset), used, (used + 63) / 64 * 64};
}

bool IsNarrow(const ComponentPort& port) { return port.sampleBytes() == sizeof(NarrowSample); }

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

void StageBench::RandomiseSettings() {
  const auto level = [&] { return static_cast<std::int16_t>(Random(-1, 1)); };
  const int set = Random(0, 3);
  settings = {};
  settings.matrixSelect = static_cast<std::uint16_t>(std::max(Random(-4, 2), 0));
  settings.chromaMedian = Random(0, 3) == 0 ? std::int16_t{-1} : std::int16_t{0};
  settings.processingSet = static_cast<std::int16_t>(set == 3 ? 3 : set - 1);
  settings.setIndex = static_cast<std::size_t>(set);
  settings.toneLevel = level();
  settings.toneIndex = static_cast<std::size_t>(settings.toneLevel + 1);
  settings.isoClass = static_cast<std::size_t>(Random(0, 4));
  settings.exposureAdjust =
      level() == 0 ? static_cast<std::int16_t>(Random(-20, 20)) : std::int16_t{0};
}

void StageBench::RandomiseTuning(bool hostile, bool narrow) {
  const auto any = [&] { return static_cast<std::uint16_t>(random()); };
  const auto small = [&](int low, int high) {
    return static_cast<std::int16_t>(Random(low, high));
  };
  tuning = rawfile::RandomCamera(random(), {.maxWidth = 16, .maxHeight = 8}).properties.tuning;
  if (narrow) {  // so that curves and their sum, and the correction, have 16 bits
    for (DetailTuning& detail : tuning.details) {
      for (ApcCurveParams* curve :
           {&detail.hApcShort, &detail.hApcLong, &detail.vApc, &detail.rApc, &detail.aApc}) {
        curve->knee1 = small(0, 200);
        curve->knee2 = small(0, 400);
        for (std::int16_t& code : curve->slopeCode) code = small(0, 5);
        for (std::int16_t& offset : curve->offset) offset = small(-50, 50);
      }
    }
    for (ChromaCorrectionTuning& correction : tuning.chromaCorrection) {
      correction.redShift = correction.blueShift = static_cast<std::uint16_t>(Random(0, 1));
    }
  }
  if (hostile) {
    auto words = std::bit_cast<TuningBlock::Words>(tuning);
    for (std::uint16_t& word : words) {
      if (Random(0, narrow ? 299 : 11) == 0) word = any();
    }
    tuning = std::bit_cast<TuningBlock>(words);
  }
  const auto fill = [&](auto& values, int low, int high) {
    for (auto& v : values)
      v = hostile && !narrow ? static_cast<std::int16_t>(any()) : small(low, high);
  };
  tables = {};
  for (std::int32_t& gain : settings.wbGains) gain = Random(0, hostile ? 32767 : 4000);
  fill(tables.colourMatrix, narrow ? -500 : -1200, narrow ? 500 : 1200);
  fill(tables.colourOffsets, -40, 40);
  fill(tables.colourGains, 0, 200);
  fill(tables.luminanceWeights, 0, narrow ? 80 : 250);
  if (hostile && narrow && Random(0, 3) == 0) {
    // Detail far beyond what the curves hold, in a graph whose mixed luminance is narrow.
    for (FilterTuning& filters : tuning.filters) filters.detailGainLow = any();
    tables.luminanceWeights[1] = 0;
  }
  tables.chromaGainCb = small(60, 200);
  tables.chromaGainCr = hostile && !narrow ? static_cast<std::int16_t>(any()) : small(60, 200);
}

void StageBench::StartAnywhere(const Level& level, bool hostile, bool narrow, int line) {
  const auto make = narrow ? level.code.makeNarrowGraph : level.code.makeWideGraph;
  RandomiseSettings();
  Result result = DEIMG_OK;
  bool fits = false;
  do {  // until narrow samples hold what they have to, and no stage refuses its tuning
    RandomiseTuning(hostile, narrow);
    if (!narrow && hostile) {
      for (std::int32_t& gain : settings.wbGains) gain = static_cast<std::int32_t>(random());
    }
    graph_ = make({*plane.get(), plane.samples()}, {settings, tables, tuning, geometry},
                  1 + Random(0, 1));
    fits = !narrow || graph_->RangesFit();
    if (!fits) continue;
    Find(TypeId::kLastStageRgb).ComputeContext(kGuardLines);
    result = Find(TypeId::kLastStageRgb).Start(line);
  } while (!fits || (hostile && result != DEIMG_OK));
  ASSERT_EQ(result, DEIMG_OK);
}

/// Within the range of the port, often at its ends.
Sample StageBench::RandomSample(const ComponentPort& port) {
  const auto [low, high] = port.range();
  const unsigned kind = random() % 8;
  if (kind == 0) return static_cast<Sample>(high);
  if (kind == 1) return static_cast<Sample>(low);
  // Moderate values, too, where the range is wide.
  constexpr std::int64_t kModerate = 16380;
  const bool all = kind < 4 || low > kModerate || high < -kModerate;
  return static_cast<Sample>(std::uniform_int_distribution<std::int64_t>(
      all ? low : std::max(low, -kModerate), all ? high : std::min(high, kModerate))(random));
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
      const Sample value = RandomSample(port);
      if (IsNarrow(port)) {
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
  return IsNarrow(*component.port(port)) ? copy(component.GetLine<NarrowSample>(offset, port))
                                         : copy(component.GetLine(offset, port));
}

void StageBench::Compute(ComponentX& stage) {
  std::vector<std::vector<std::uint8_t>> before;
  std::vector<std::pair<LineBytes, int>> own;
  for (int port = 0; port < stage.portCount(); ++port) {
    for (int o = stage.runFirst(); o <= stage.runLast(); ++o) {
      own.emplace_back(BytesOf(*stage.port(port), o), o);
      const LineBytes line = own.back().first;
      std::memset(line.samples + line.used, kCanary, line.all - line.used);
      before.emplace_back(line.samples, line.samples + line.all);
    }
  }
#ifdef DEIMG_POISON
  computing = stage.name();
  __sanitizer_set_death_callback(SayWhich);
  ForEachInputLine(stage, false, [&](const ComponentX&, const ComponentPort& port, int o) {
    __asan_poison_memory_region(port.Line<std::uint8_t>(o), BytesOf(port, o).all);
  });
#endif
  ASSERT_EQ(stage.Run(0, 0), DEIMG_OK);
#ifdef DEIMG_POISON
  ForEachInputLine(stage, false, [&](const ComponentX&, const ComponentPort& port, int o) {
    __asan_unpoison_memory_region(port.Line<std::uint8_t>(o), BytesOf(port, o).all);
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

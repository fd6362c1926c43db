#include "pipeline/levels.h"

#include <algorithm>

namespace deimg {
namespace baseline {
extern const LevelCode kLevelCode;
}
#ifdef DEIMG_X86_LEVELS
namespace avx2 {
extern const LevelCode kLevelCode;
}
namespace avx512 {
extern const LevelCode kLevelCode;
}
#endif

namespace {

bool Always() { return true; }

#ifdef DEIMG_X86_LEVELS
bool HasAvx2() {
  return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0 &&
         __builtin_cpu_supports("bmi2") != 0;
}
bool HasAvx512() {
  return HasAvx2() && __builtin_cpu_supports("avx512f") != 0 &&
         __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
         __builtin_cpu_supports("avx512vl") != 0;
}

constexpr Level kLevels[] = {
    {"sse2", baseline::kLevelCode, Always},
    {"avx2", avx2::kLevelCode, HasAvx2},
    {"avx512", avx512::kLevelCode, HasAvx512},
};
#else
constexpr Level kLevels[] = {{"baseline", baseline::kLevelCode, Always}};
#endif

/// Whether the white balance leaves no sample outside 0 to 4095: no gain is negative, and none
/// makes a product with a raw sample wrap.
bool MosaicIsNarrow(const DevelopSettings& settings) {
  return std::all_of(settings.wbGains.begin(), settings.wbGains.end(),
                     [](std::int32_t gain) { return gain >= 0 && gain <= INT16_MAX; });
}

}  // namespace

GraphOwner Level::MakeGraph(CallerStream& plane, const StageContext& context,
                            int outputSampleBytes) const {
  const auto make = MosaicIsNarrow(context.settings) ? code.makeNarrowGraph : code.makeWideGraph;
  return make(plane, context, outputSampleBytes);
}

std::span<const Level> Levels() { return kLevels; }

const Level& BestLevel(std::string_view highest) {
#ifdef DEIMG_X86_LEVELS
  __builtin_cpu_init();
#endif
  const Level* best = &kLevels[0];
  for (const Level& level : kLevels) {
    if (level.isSupported()) best = &level;
    if (level.name == highest) break;
  }
  return *best;
}

}  // namespace deimg

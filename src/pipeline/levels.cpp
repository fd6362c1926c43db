#include "pipeline/levels.h"

#include <algorithm>

// The levels, the lowest first: name, namespace of the code, what the processor must have for it.
#define DEIMG_HAS(feature) (__builtin_cpu_supports(feature) != 0)
#ifdef DEIMG_X86_LEVELS
#define DEIMG_LEVELS(LEVEL)                                                                   \
  LEVEL("sse2", baseline, true)                                                               \
  LEVEL("avx2", avx2, DEIMG_HAS("avx2") && DEIMG_HAS("bmi") && DEIMG_HAS("bmi2"))             \
  LEVEL("avx512", avx512,                                                                     \
        DEIMG_HAS("avx2") && DEIMG_HAS("bmi") && DEIMG_HAS("bmi2") && DEIMG_HAS("avx512f") && \
            DEIMG_HAS("avx512bw") && DEIMG_HAS("avx512dq") && DEIMG_HAS("avx512vl"))
#else
#define DEIMG_LEVELS(LEVEL) LEVEL("baseline", baseline, true)
#endif

namespace deimg {

#define DEIMG_DECLARE(name, space, needs) \
  namespace space {                       \
  extern const LevelCode kLevelCode;      \
  }
DEIMG_LEVELS(DEIMG_DECLARE)

namespace {

#define DEIMG_ROW(name, space, needs) {name, space::kLevelCode, [] { return needs; }},
constexpr Level kLevels[] = {DEIMG_LEVELS(DEIMG_ROW)};

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

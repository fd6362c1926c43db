#include "pipeline/levels.h"

// The levels, the lowest first: name, namespace of the code, what the processor must have for it.
#define DEIMG_HAS(feature) (__builtin_cpu_supports(feature) != 0)
#ifdef DEIMG_X86_LEVELS
#define DEIMG_LEVELS(LEVEL)                                                                   \
  LEVEL("sse2", baseline, true)                                                               \
  LEVEL("sse4.1", sse41, DEIMG_HAS("sse4.1"))                                                 \
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

}  // namespace

GraphOwner Level::MakeGraph(const SensorPlane& plane, const StageContext& context,
                            int outputSampleBytes) const {
  GraphOwner narrow = code.makeNarrowGraph(plane, context, outputSampleBytes);
  if (narrow == nullptr || narrow->RangesFit()) return narrow;
  narrow.reset();
  return code.makeWideGraph(plane, context, outputSampleBytes);
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

/// The code of one instruction level: included once by each source in levels/.
#ifndef DEIMG_PIPELINE_LEVEL_INL_H
#define DEIMG_PIPELINE_LEVEL_INL_H

#include "decode/plane_lines-inl.h"
#include "pipeline/levels.h"
#include "pipeline/processing_graph-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
static GraphOwner MakeGraph(const SensorPlane& plane, const StageContext& context,
                            int outputSampleBytes) {
  return GraphOwner(new Graph<T>(plane, context, outputSampleBytes));
}

extern const LevelCode kLevelCode;
// NOLINTNEXTLINE(misc-definitions-in-headers): included once by each level's source.
const LevelCode kLevelCode = {MakeGraph<NarrowSample>, MakeGraph<Sample>, kPlaneLines};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_PIPELINE_LEVEL_INL_H

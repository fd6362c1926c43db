#include "pipeline/graph_builder.h"

#include "pipeline/bands.h"
#include "pipeline/development.h"

namespace deimg {

Result GraphBuilder(const Level& level, const SensorPlane& plane, const ImageGeometry& geometry,
                    DevelopParams& params, const ImageProps& props, int sampleBytes,
                    CallerStream& output, Bands* bands) {
  Development development;
  DEIMG_RETURN_IF_FAILED(development.Derive(params, props));
  if (output.Open == nullptr || output.Write == nullptr || output.Close == nullptr) {
    return DEIMG_MISSING;
  }
  const GraphOwner graph = level.MakeGraph(plane, development.ContextOf(geometry), sampleBytes);
  if (!graph) return DEIMG_OUT_OF_MEMORY;
  const bool shared = bands != nullptr && bands->AreMadeWith(development.settings);
  return graph->Run(output, development.tables.luminanceStatus, shared ? bands : nullptr);
}

}  // namespace deimg

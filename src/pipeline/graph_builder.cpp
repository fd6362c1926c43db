#include "pipeline/graph_builder.h"

#include "pipeline/development_tables.h"
#include "pipeline/settings.h"

namespace deimg {

Result GraphBuilder(const Level& level, CallerStream& plane, const ImageGeometry& geometry,
                    DevelopParams& params, const ImageProps& props, int sampleBytes,
                    CallerStream& output) {
  DevelopSettings settings;
  DEIMG_RETURN_IF_FAILED(ResolveSettings(params, props, settings));
  const TuningBlock tuning = TuningBlock::Load(props.tuningBlock);
  DevelopmentTables tables;
  DEIMG_RETURN_IF_FAILED(DeriveTables(props, settings, tables));
  DEIMG_RETURN_IF_FAILED(ResolveIndices(props, settings));
  if (output.Open == nullptr || output.Write == nullptr || output.Close == nullptr) {
    return DEIMG_MISSING;
  }
  const GraphOwner graph =
      level.MakeGraph(plane, {settings, tables, tuning, geometry}, sampleBytes);
  return graph ? graph->Run(output, tables.luminanceStatus) : Result{DEIMG_OUT_OF_MEMORY};
}

}  // namespace deimg

#include "graph/graph_builder.h"

#include "graph/processing_graph.h"

namespace deimg {

Result GraphBuilder(CallerStream& plane, DevelopParams& params, const ImageProps& props,
                    std::uint32_t format, CallerStream& output) {
  DevelopSettings settings;
  DEIMG_RETURN_IF_FAILED(SettleSettings(params, props, settings));
  DevelopmentTables tables;
  DEIMG_RETURN_IF_FAILED(DeriveTables(props, settings, tables));
  const auto isoClass = IsoClassOf(static_cast<std::int16_t>(props.sensitivity()));
  if (!isoClass || !settings.setIndex()) return DEIMG_UNSUPPORTED;
  settings.isoClass = *isoClass;
  if (output.Open == nullptr || output.Write == nullptr || output.Close == nullptr) {
    return DEIMG_MISSING;
  }
  const StageContext context{
      ChosenKernels(),    settings,           tables, TuningBlock(props.tuningBlock),
      props.sensor.width, props.sensor.height};
  const int sampleBytes = (format & 0xFF) == DEIMG_FORMAT_16BIT ? 2 : 1;
  ProcessingGraph graph(plane, context, sampleBytes, props.sensor);
  return graph.Run(output, tables.luminanceStatus);
}

}  // namespace deimg

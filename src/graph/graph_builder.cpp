#include "graph/graph_builder.h"

#include "graph/processing_graph.h"

namespace deimg {
namespace {

template <typename T>
Result RunGraph(CallerStream& plane, const StageContext& context, int sampleBytes,
                const SensorRecord& sensor, CallerStream& output) {
  ProcessingGraph<T> graph(plane, context, sampleBytes, sensor);
  return graph.Run(output, context.tables.luminanceStatus);
}

}  // namespace

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
  const auto run = settings.mosaicIsNarrow() ? RunGraph<NarrowSample> : RunGraph<Sample>;
  return run(plane, context, sampleBytes, props.sensor, output);
}

}  // namespace deimg

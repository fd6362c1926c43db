// Every component of the graph alone: one line computed over and over, as often as a picture has
// lines, from inputs that stand still.
#include <cstring>

#include "pipeline/development_tables.h"
#include "pipeline/levels.h"
#include "pipeline/settings.h"
#include "props/image_props.h"
#include "storage/memory_stream.h"
#include "timing.h"

namespace deimg::bench {
namespace {

struct StartedGraph {
  explicit StartedGraph(const Scene& scene) {
    std::size_t position = 0;
    CallerStream input = MemoryInput(scene.file, position);
    ImagePropsBlock block;
    DevelopParams params{};
    params.toneLevel = params.matrixLevel = params.colourLevel = params.wbPreset = -10;
    if (ReadImagePropsBlock(input, block) != 0 || pxfPsReadOpenImageProps(block, props) != 0 ||
        ResolveSettings(params, props, settings) != 0 ||
        DeriveTables(props, settings, tables) != 0 || ResolveIndices(props, settings) != 0) {
      std::abort();
    }
    geometry = DeriveGeometry(props.sensor);
    tuning = TuningBlock::Load(props.tuningBlock);
    plane = MemoryStream::Make(scene.mosaic.size() * 2);
    std::memcpy(plane.memory(), scene.mosaic.data(), scene.mosaic.size() * 2);
    graph = ChosenLevel().MakeGraph({*plane.get(), plane.samples()},
                                    {settings, tables, tuning, geometry}, 1);
    if (graph->Find(TypeId::kLastStageRgb)->Start(scene.height / 2) != 0) std::abort();
  }
  ImageProps props{};
  DevelopSettings settings;
  DevelopmentTables tables;
  TuningBlock tuning{};
  ImageGeometry geometry{};
  MemoryStream plane;
  GraphOwner graph;
};

}  // namespace

void RegisterStages() {
  for (const ComponentInfo& info : kComponents) {
    const TypeId type = info.typeId;
    const std::string name = "stage/" + std::to_string(static_cast<int>(type));
    benchmark::RegisterBenchmark(name.c_str(),
                                 [type](benchmark::State& state) {
                                   const Scene& scene = SixMegapixels();
                                   StartedGraph started(scene);
                                   ComponentX* const stage = started.graph->Find(type);
                                   AgainstYardstick(state, scene, [&] {
                                     const int last = stage->runLast();
                                     for (int y = 0; y < scene.height; ++y) {
                                       if (stage->Run(last, last) != DEIMG_OK) std::abort();
                                     }
                                   });
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(6);
  }
}

}  // namespace deimg::bench

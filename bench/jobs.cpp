// Whole jobs through the exported function, and their parts.
#include <atomic>
#include <thread>

#include <deimg/deimg.h>
#include "decode/black_level_subtraction.h"
#include "decode/preview_reduction.h"
#include "decode/sensor_plane_decoder.h"
#include "pipeline/graph_builder.h"
#include "props/image_props.h"
#include "storage/memory_stream.h"
#include "timing.h"

namespace deimg::bench {
namespace {

/// A job stopped between its parts.
struct Parts {
  explicit Parts(const Scene& from) : scene(from) {
    std::size_t position = 0;
    CallerStream input = MemoryInput(scene.file, position);
    ImagePropsBlock block;
    if (ReadImagePropsBlock(input, block) != 0 || pxfPsReadOpenImageProps(block, props) != 0) {
      std::abort();
    }
    geometry = DeriveGeometry(props.sensor);
    plane = MemoryStream::Make(PlaneBytes(geometry));
    Decode();
  }
  void Decode() {
    std::size_t position = 0;
    CallerStream input = MemoryInput(scene.file, position);
    if (SensorPlaneDecoder(ChosenLevel().planeLines(), input, geometry, props,
                           {*plane.get(), plane.samples()}) != DEIMG_OK) {
      std::abort();
    }
  }
  void SubtractBlack() {
    if (BlackLevelSubtraction(ChosenLevel().planeLines(), geometry, *plane.get(),
                              props.blackLevelWords) != 0)
      std::abort();
  }
  void Graph(int processingSet) {
    CallerStream output = NullOutput();
    DevelopParams params{};
    params.toneLevel = params.matrixLevel = params.colourLevel = params.wbPreset = -10;
    params.processingSet = static_cast<std::int16_t>(processingSet);
    if (GraphBuilder(ChosenLevel(), {*plane.get(), plane.samples()}, geometry, params, props, 1,
                     output) != 0) {
      std::abort();
    }
  }
  void Reduce() {
    const ImageGeometry reduced = ReduceGeometry(geometry);
    const auto planes = BlockOf<std::uint16_t>::Zeroed(2 * PlaneBytes(reduced));
    if (PreviewReduction(ChosenLevel().planeLines(), {*plane.get(), plane.samples()}, geometry,
                         reduced, planes.get()) != DEIMG_OK)
      std::abort();
  }

  const Scene& scene;
  ImageProps props{};
  ImageGeometry geometry{};
  MemoryStream plane;
};

const char* const kKinds[] = {"full8", "full16", "full8/set3", "quick8", "preview", "thumbnail"};

/// Counters: the most memory the job holds, and what of it is not the sensor plane, in MiB.
void Job(benchmark::State& state, const Scene& scene, int kind) {
  const auto job = [&] {
    switch (kind) {
      case 0:
        return Develop(scene, DEIMG_JOB_FULL, DEIMG_FORMAT_8BIT, 0);
      case 1:
        return Develop(scene, DEIMG_JOB_FULL, DEIMG_FORMAT_16BIT, 0);
      case 2:
        return Develop(scene, DEIMG_JOB_FULL, DEIMG_FORMAT_8BIT, 3);
      case 3:
        return Develop(scene, DEIMG_JOB_QUICK, DEIMG_FORMAT_8BIT, 0);
      case 4:
        return Develop(scene, DEIMG_JOB_PREVIEW, DEIMG_FORMAT_8BIT, 0);
      default:
        return Develop(scene, DEIMG_JOB_THUMBNAIL, DEIMG_FORMAT_8BIT, 0);
    }
  };
  AgainstYardstick(state, scene, job);
  const double plane = 2.0 * static_cast<double>(scene.mosaic.size()) / (1 << 20);
  const double peak = PeakGrowth(job);
  state.counters["peakMiB"] = peak;
  state.counters["beyondPlaneMiB"] = peak - plane;
}

/// Jobs finished by two threads in the time that one thread takes for one.
void TwoThreads(benchmark::State& state) {
  const Scene& scene = SixMegapixels();
  const auto run = [&](int threads) {
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i) {
      running.emplace_back([&] {
        for (int n = 0; n < 4; ++n) Develop(scene, DEIMG_JOB_FULL, DEIMG_FORMAT_8BIT, 0);
      });
    }
    for (auto& thread : running) thread.join();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  double one = 1e9, two = 1e9;
  for (auto _ : state) {
    one = std::min(one, run(1));
    two = std::min(two, run(2));
    state.SetIterationTime(two);
  }
  state.counters["scaling"] = 2 * one / two;
}

template <typename Part>
void RegisterPart(const char* name, Part part) {
  benchmark::RegisterBenchmark(name,
                               [part](benchmark::State& state) {
                                 Parts parts(SixMegapixels());
                                 AgainstYardstick(state, parts.scene, [&] { part(parts); });
                               })
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterJobs(bool large) {
  RegisterPart("part/decode", [](Parts& p) { p.Decode(); });
  RegisterPart("part/black", [](Parts& p) { p.SubtractBlack(); });
  RegisterPart("part/reduce", [](Parts& p) { p.Reduce(); });
  RegisterPart("part/graph/set0", [](Parts& p) { p.Graph(0); });
  RegisterPart("part/graph/set3", [](Parts& p) { p.Graph(3); });
  for (int kind = 0; kind < 6; ++kind) {
    const std::string name = std::string("job/") + kKinds[kind];
    benchmark::RegisterBenchmark(
        name.c_str(), [kind](benchmark::State& state) { Job(state, SixMegapixels(), kind); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark("job/two threads", TwoThreads)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->Iterations(5);
  if (!large) return;
  benchmark::RegisterBenchmark("large/full8",
                               [](benchmark::State& state) { Job(state, HundredMegapixels(), 0); })
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->Iterations(5);
}

}  // namespace deimg::bench

// Benchmarks of the library. DEIMG_BENCH_LARGE=1 adds the hundred-megapixel scene.
#include <benchmark/benchmark.h>

#include <cstdlib>

namespace deimg::bench {
void RegisterJobs(bool large);
void RegisterStages();
}  // namespace deimg::bench

int main(int argc, char** argv) {
  deimg::bench::RegisterJobs(std::getenv("DEIMG_BENCH_LARGE") != nullptr);
  deimg::bench::RegisterStages();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
}

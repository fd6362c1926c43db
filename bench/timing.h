/// Benchmarks whose every iteration has the yardstick timed beside it.
#ifndef DEIMG_BENCH_TIMING_H
#define DEIMG_BENCH_TIMING_H

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "scene.h"
#include "yardstick.h"

namespace deimg::bench {

/// Runs `body` and the yardstick by turns. Reports the body's time, and as counters the quotients
/// of minima and of medians (Q, Qmedian), the yardstick's minimum in ms, and the body's minimum in
/// ms per megasample of the scene.
template <typename Body>
void AgainstYardstick(benchmark::State& state, const Scene& scene, Body body) {
  using Clock = std::chrono::steady_clock;
  const Scene& six = SixMegapixels();
  static std::vector<std::uint16_t> rgb(3 * six.mosaic.size());
  std::vector<double> yard, times;
  const auto timed = [](auto&& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
  };
  body();  // everything in place
  for (auto _ : state) {
    yard.push_back(timed([&] { Yardstick(six.mosaic.data(), six.width, six.height, rgb.data()); }));
    times.push_back(timed(body));
    state.SetIterationTime(times.back());
  }
  std::sort(yard.begin(), yard.end());
  std::sort(times.begin(), times.end());
  const double megasamples = scene.width * static_cast<double>(scene.height) / 1e6;
  // Q is one six-megapixel frame; larger scenes are compared sample by sample.
  const double scale = megasamples / (six.width * static_cast<double>(six.height) / 1e6);
  state.counters["Q"] = times.front() / yard.front() / scale;
  state.counters["Qmedian"] = times[times.size() / 2] / yard[yard.size() / 2] / scale;
  state.counters["yardMs"] = 1e3 * yard.front();
  state.counters["msPerMs"] = 1e3 * times.front() / megasamples;
}

/// Runs `body` in a process of its own and returns by how many MiB its resident memory grew at
/// most.
template <typename Body>
double PeakGrowth(Body body) {
  malloc_trim(0);  // what the heap keeps would hide growth
  int ends[2];
  if (pipe(ends) != 0) return 0;
  const pid_t child = fork();
  if (child == 0) {
    const auto peak = [] {
      rusage usage{};
      getrusage(RUSAGE_SELF, &usage);
      return static_cast<double>(usage.ru_maxrss) / 1024;
    };
    const double before = peak();
    body();
    const double grown = peak() - before;
    _exit(write(ends[1], &grown, sizeof(grown)) == sizeof(grown) ? 0 : 1);
  }
  double grown = 0;
  if (read(ends[0], &grown, sizeof(grown)) != sizeof(grown)) grown = 0;
  close(ends[0]);
  close(ends[1]);
  waitpid(child, nullptr, 0);
  return grown;
}

}  // namespace deimg::bench

#endif  // DEIMG_BENCH_TIMING_H

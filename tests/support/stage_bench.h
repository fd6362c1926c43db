/// Single stages of a graph at work on lines that a test makes.
#ifndef DEIMG_TESTS_SUPPORT_STAGE_BENCH_H
#define DEIMG_TESTS_SUPPORT_STAGE_BENCH_H

#include <random>
#include <vector>

#include "pipeline/levels.h"
#include "storage/memory_stream.h"

namespace deimg::testing {

using Samples = std::vector<Sample>;

/// A job's settings, tables and tuning, and a graph made from them.
class StageBench {
 public:
  explicit StageBench(int width, unsigned seed);

  /// Makes the graph with narrow or wide samples and starts it at `line`, with random settings and
  /// tuning, a part of them any words that the stages take. Every ring gets more lines than its
  /// readers declare.
  void StartAnywhere(const Level& level, bool hostile, bool narrow, int line);

  [[nodiscard]] ComponentX& Find(TypeId type) const { return *graph_->Find(type); }
  /// Fills the lines of a stage's inputs: those inside its window when `inside`, else the others.
  void FillInputs(ComponentX& stage, bool inside);
  /// A line of any component.
  [[nodiscard]] Samples Line(const ComponentX& component, int port, int offset) const;
  /// Computes the stage's current line; nothing but that line may change, and nothing outside the
  /// window may be read.
  void Compute(ComponentX& stage);

  std::mt19937 random;
  DevelopSettings settings;
  DevelopmentTables tables;
  TuningBlock tuning{};
  ImageGeometry geometry{};
  MemoryStream plane;

 private:
  void RandomiseSettings();
  void RandomiseTuning(bool hostile, bool narrow);
  Sample RandomSample(const ComponentPort& port);
  int Random(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
  template <typename Function>
  void ForEachInputLine(ComponentX& stage, bool inside, Function function) const;

  GraphOwner graph_;
};

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_STAGE_BENCH_H

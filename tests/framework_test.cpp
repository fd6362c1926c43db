// Components, ports, connections, contexts, and the graph's table.
#include <gtest/gtest.h>

#include <map>

#include "graph/component.h"
#include "graph/stage.h"
#include "pipeline/connections.h"
#include "pipeline/levels.h"
#include "storage/memory_stream.h"

namespace deimg {
namespace {

/// Writes the absolute number of each line it computes, and counts the lines.
class Probe final : public ComponentX {
 public:
  explicit Probe(const ComponentInfo& info) : ComponentX(info, {4, 100}, 4) {}
  Result Run(int first, int last) override {
    for (int o = first; o <= last; ++o) {
      port(0)->Line(o)[0] = currentLine() + o;
      ++linesComputed;
    }
    return failAt != 0 && linesComputed >= failAt ? Result{77} : Result{DEIMG_OK};
  }
  Result Prepare() override {
    ++prepared;
    return DEIMG_OK;
  }
  int prepared = 0;
  int linesComputed = 0;
  int failAt = 0;
};

constexpr ComponentInfo kOneLine = {TypeId::kVHDiff, "one", 1, 1};
constexpr ComponentInfo kThreeLines = {TypeId::kVHDiff, "three", 3, 1};
constexpr ComponentInfo kSevenLines = {TypeId::kVHDiff, "seven", 7, 2};

TEST(Component, DiamondComputesEveryLineOnce) {
  Probe source(kOneLine), left(kThreeLines), right(kSevenLines), sink(kThreeLines);
  ASSERT_EQ(left.Connect(source), DEIMG_OK);
  ASSERT_EQ(right.Connect(source), DEIMG_OK);
  ASSERT_EQ(sink.Connect(left), DEIMG_OK);
  ASSERT_EQ(sink.Connect(right), DEIMG_OK);
  EXPECT_EQ(sink.Advance(5), DEIMG_NOT_STARTED);
  EXPECT_EQ(sink.Rotate(), DEIMG_MISSING);
  EXPECT_EQ(sink.currentLine(), ComponentX::kNotStarted);

  ASSERT_EQ(sink.Start(5), DEIMG_OK);
  EXPECT_EQ(sink.margin(), 0);
  EXPECT_EQ(left.margin(), 2);
  EXPECT_EQ(source.margin(), 8);
  EXPECT_EQ(source.linesComputed, 9);
  for (int line = 6; line <= 20; ++line) {
    ASSERT_EQ(sink.Advance(line), DEIMG_OK);
    ASSERT_EQ(sink.Advance(line), DEIMG_OK);  // nothing happens
  }
  EXPECT_EQ(source.linesComputed, 9 + 15);
  EXPECT_EQ(left.linesComputed, 3 + 15);
  EXPECT_EQ(sink.linesComputed, 1 + 15);
  for (int o = -4; o <= 4; ++o) EXPECT_EQ(source.GetLine(o, 0)[0], 20 + o);
  EXPECT_EQ(source.GetLine(5, 0), nullptr);
  EXPECT_EQ(source.GetLine(0, 1), nullptr);
  EXPECT_EQ(source.GetLine(0, 8), nullptr);

  // Anew at another line, further down or up: only the lines around it, and no table again.
  for (const int line : {60, 30}) {
    const int before = source.linesComputed;
    ASSERT_EQ(sink.Start(line), DEIMG_OK);
    EXPECT_EQ(source.linesComputed, before + 9);
    EXPECT_EQ(sink.linesComputed, 1 + 15 + (line == 60 ? 1 : 2));
    for (int o = -4; o <= 4; ++o) EXPECT_EQ(source.GetLine(o, 0)[0], line + o);
  }
  EXPECT_EQ(source.prepared, 1);

  right.failAt = 1;
  EXPECT_EQ(sink.Advance(31), 77u);
  EXPECT_EQ(sink.currentLine(), 30);
}

/// Reads one line further down than it declares, or writes one.
class Careless final : public Stage {
 public:
  Careless(ComponentX& source, bool reads)
      : Stage(kThreeLines, {4, 100}, {&source}), reads_(reads), in_(*this, source, 0) {}

 private:
  void ComputeLine(int o) override { out_[reads_ ? o : o + 1][0] = *in_[reads_ ? o + 2 : o]; }
  const bool reads_;
  const Input<Sample> in_;
  const Output<Sample> out_{*this, 0};
};

TEST(Stage, ContractBrokenIsSaidByName) {
#ifdef DEIMG_CHECK_CONTRACTS
  Probe source(kOneLine);
  Careless reader(source, true), writer(source, false);
  EXPECT_DEATH((void)reader.Start(5), "stage \"three\".* reads port 0 of \"one\".* at offset 2");
  EXPECT_DEATH((void)writer.Start(5), "stage \"three\".* writes port 0 .* at offset 1");
#else
  GTEST_SKIP() << "contracts are checked in debug and sanitizer builds";
#endif
}

TEST(ProcessingGraph, IsWiredAsTheTablesSay) {
  EXPECT_EQ(std::size(kComponents), 20u);
  EXPECT_EQ(std::size(kConnections), 36u);
  ImageGeometry geometry{};
  geometry.sensorWidth = geometry.sensorHeight = geometry.areaWidth = geometry.areaHeight = 16;
  const MemoryStream plane = MemoryStream::Make(2 * 16 * 16);
  const GraphOwner graph =
      BestLevel("").code.makeNarrowGraph({*plane.get()}, {{}, {}, {}, geometry}, 2);
  graph->Find(TypeId::kLastStageRgb)->ComputeContext(0);
  const std::map<TypeId, int> margins = {{TypeId::kSourceStreamReader, 8},
                                         {TypeId::kWhiteBalance, 8},
                                         {TypeId::kVHDiff, 4},
                                         {TypeId::kHokanCircuit, 2},
                                         {TypeId::kAFilterHokanLpf, 6}};
  EXPECT_EQ(ProcessingGraph::kReach, graph->Find(TypeId::kSourceStreamReader)->margin() / 2);
  for (const ComponentInfo& info : kComponents) {
    ComponentX* const component = graph->Find(info.typeId);
    ASSERT_NE(component, nullptr) << info.name;
    const auto it = margins.find(info.typeId);
    EXPECT_EQ(component->margin(), it == margins.end() ? 0 : it->second) << info.name;
    EXPECT_EQ(component->width(), info.typeId == TypeId::kLastStageRgb ? 48 : 16);
    std::vector<TypeId> expected, wired;
    for (const Connection& c : kConnections) {
      if (c.consumer == info.typeId) expected.push_back(c.input);
    }
    for (const ComponentX* input : component->inputs()) wired.push_back(input->typeId());
    EXPECT_EQ(wired, expected) << info.name;
  }
}

}  // namespace
}  // namespace deimg

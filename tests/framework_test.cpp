// Components, ports, connections, contexts, and the graph's table.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>

#include "graph/component.h"
#include "graph/processing_graph.h"
#include "graph/source_stream_reader.h"
#include "props/image_props.h"
#include "rawfile/random_camera.h"
#include "storage/memory_stream.h"
#include "storage/stream_calls.h"
#include "support/fault_heap.h"
#include "support/streams.h"

namespace deimg {
namespace {

/// Writes the absolute number of each line it computes, and counts the lines.
class Probe final : public ComponentX {
 public:
  explicit Probe(const ComponentInfo& info) : ComponentX(info, 4, 100, 4) {}
  Result Run(int first, int last) override {
    for (int o = first; o <= last; ++o) {
      OwnLine(o, 0)[0] = currentLine() + o;
      ++linesComputed;
    }
    return failAt != 0 && linesComputed >= failAt ? Result{77} : Result{DEIMG_OK};
  }
  int linesComputed = 0;
  int failAt = 0;
};

constexpr ComponentInfo kOneLine = {TypeId::kVHDiff, "one", 1, 1};
constexpr ComponentInfo kThreeLines = {TypeId::kVHDiff, "three", 3, 1};
constexpr ComponentInfo kSevenLines = {TypeId::kVHDiff, "seven", 7, 2};
constexpr ComponentInfo kNoLines = {TypeId::kVHDiff, "none", 0, 3};

TEST(ComponentPort, RingTurnsWithoutCopying) {
  ComponentPort port(2, 5, 4);
  EXPECT_STREQ(port.name(), "Component2");
  EXPECT_EQ(port.Line(0), nullptr);
  EXPECT_EQ(port.Rotate(), nullptr);
  EXPECT_EQ(port.Allocate(0), DEIMG_UNSUPPORTED);
  ASSERT_EQ(port.Allocate(5), DEIMG_OK);
  EXPECT_EQ(port.Allocate(9), DEIMG_OK);
  EXPECT_EQ(port.lines(), 5);
  EXPECT_EQ(port.Line(3), nullptr);
  EXPECT_EQ(port.Line(-3), nullptr);
  std::set<Sample*> lines;
  for (int o = -2; o <= 2; ++o) lines.insert(port.Line(o));
  EXPECT_EQ(lines.size(), 5u);
  Sample* const oldest = port.Line(-2);
  Sample* const newest = port.Line(2);
  EXPECT_EQ(port.Rotate(), oldest);
  EXPECT_EQ(port.Line(2), oldest);
  EXPECT_EQ(port.Line(1), newest);
  port.Reset();
  EXPECT_EQ(port.Line(-2), oldest);

  ComponentPort small(0, 5, 4);
  const testing::FaultScope faults({.failAt = 1});
  EXPECT_EQ(small.Allocate(1), DEIMG_OUT_OF_MEMORY);
}

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
  EXPECT_EQ(sink.context(), 0);
  EXPECT_EQ(left.context(), 2);
  EXPECT_EQ(source.context(), 8);
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

  right.failAt = 1;
  EXPECT_EQ(sink.Advance(21), 77u);
  EXPECT_EQ(sink.currentLine(), 20);
}

TEST(Component, LimitsAndEmptyKernels) {
  Probe none(kNoLines), source(kOneLine);
  EXPECT_EQ(none.reach(), 0);
  EXPECT_STREQ(none.port(2)->name(), "Component2");
  EXPECT_EQ(none.port(3), nullptr);
  for (int i = 0; i < ComponentX::kMostInputs; ++i) EXPECT_EQ(none.Connect(source), DEIMG_OK);
  EXPECT_EQ(none.Connect(source), DEIMG_BAD_REQUEST);
}

/// A stream holding `height` lines of 8 samples; every sample of line n is n x 300.
MemoryStream PlaneOf(int height) {
  MemoryStream stream = MemoryStream::Make(static_cast<std::uint64_t>(height) * 16);
  for (int i = 0; i < height * 8; ++i) {
    const int value = i / 8 * 300;
    stream.memory()[2 * i] = static_cast<std::uint8_t>(value);
    stream.memory()[2 * i + 1] = static_cast<std::uint8_t>(value >> 8);
  }
  return stream;
}

class Reader final : public ComponentX {
 public:
  Reader() : ComponentX(kInfo, 8, 0, 4) {}
  Result Run(int, int) override { return DEIMG_OK; }
  static constexpr ComponentInfo kInfo = {TypeId::kVHDiff, "reader", 9, 1};
};

TEST(SourceStreamReader, ServesAndRepeatsLines) {
  const DevelopSettings settings;
  const DevelopmentTables tables;
  static const std::uint8_t block[TuningBlock::kSize] = {};
  for (const int height : {2, 100, 217, 450}) {
    const MemoryStream plane = PlaneOf(height);
    const StageContext context{ChosenKernels(), settings, tables, TuningBlock(block), 8, height};
    SourceStreamReader source(*plane.get(), context);
    Reader reader;
    ASSERT_EQ(reader.Connect(source), DEIMG_OK);
    EXPECT_EQ(source.Advance(1), DEIMG_NOT_STARTED);
    for (int line = 0; line < height; ++line) {
      ASSERT_EQ(line == 0 ? reader.Start(0) : reader.Advance(line), DEIMG_OK);
      for (int o = -4; o <= 4; ++o) {
        const int expected = std::clamp(line + o, 0, height - 1) * 300 % 65536;
        ASSERT_EQ(source.GetLine<std::uint16_t>(o, 0)[7], expected)
            << height << ' ' << line << ' ' << o;
      }
    }
  }
}

/// The lines of a graph whose mosaic has samples of type T.
template <typename T>
std::vector<std::vector<std::uint8_t>> LinesOf(CallerStream& plane, const StageContext& context,
                                               const SensorRecord& sensor) {
  testing::OutputStream output(DEIMG_PROGRESS_NEVER);
  ProcessingGraph<T> graph(plane, context, 2, sensor);
  EXPECT_EQ(graph.Run(*output.get(), DEIMG_OK), DEIMG_OK);
  return output.lines;
}

TEST(ProcessingGraph, NarrowAndWideMosaicsGiveTheSamePicture) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const rawfile::RawFile camera = rawfile::RandomCamera(seed);
    testing::InputStream input(Serialize(camera));
    ImagePropsBlock block;
    ImageProps props{};
    ASSERT_EQ(ReadImagePropsBlock(*input.get(), block), DEIMG_OK);
    ASSERT_EQ(pxfPsReadOpenImageProps(block, props), DEIMG_OK);
    DevelopParams params = testing::RecordedParams();
    DevelopSettings settings;
    DevelopmentTables tables;
    ASSERT_EQ(SettleSettings(params, props, settings), DEIMG_OK);
    ASSERT_EQ(DeriveTables(props, settings, tables), DEIMG_OK);
    settings.isoClass = IsoClassOf(static_cast<std::int16_t>(props.sensitivity())).value();
    const auto gain = static_cast<std::int32_t>(seed * seed * 80);
    settings.wbGains = {gain, 1024, 32767 - gain, 1500};
    ASSERT_TRUE(settings.mosaicIsNarrow());
    const std::size_t bytes = 2 * camera.plane.samples.size();
    const MemoryStream plane = MemoryStream::Make(bytes);
    std::memcpy(plane.memory(), camera.plane.samples.data(), bytes);
    const StageContext context{
        ChosenKernels(),    settings,           tables, TuningBlock(props.tuningBlock),
        props.sensor.width, props.sensor.height};
    EXPECT_EQ(LinesOf<NarrowSample>(*plane.get(), context, props.sensor),
              LinesOf<Sample>(*plane.get(), context, props.sensor))
        << seed;
  }
}

TEST(ProcessingGraph, IsWiredAsTheTableSays) {
  EXPECT_EQ(std::size(kComponents), 20u);
  EXPECT_EQ(std::size(kConnections), 36u);
  std::set<std::pair<TypeId, TypeId>> distinct;
  for (const Connection& c : kConnections) distinct.insert({c.consumer, c.input});
  EXPECT_EQ(distinct.size(), 36u);

  const MemoryStream plane = MemoryStream::Make(2 * 16 * 16);
  const std::vector<std::uint8_t> zeros(TuningBlock::kSize);
  DevelopSettings settings;
  settings.wbGainsSet = true;
  const DevelopmentTables tables;
  const auto& block = *reinterpret_cast<const std::uint8_t(*)[TuningBlock::kSize]>(zeros.data());
  const StageContext context{ChosenKernels(), settings, tables, TuningBlock(block), 16, 16};
  const SensorRecord sensor{};
  ProcessingGraph<Sample> graph(*plane.get(), context, 1, sensor);
  graph.Find(TypeId::kLastStageRgb)->ComputeContext(0);
  const std::map<TypeId, int> expected = {{TypeId::kSourceStreamReader, 8},
                                          {TypeId::kWhiteBalance, 8},
                                          {TypeId::kVHDiff, 4},
                                          {TypeId::kHokanCircuit, 2},
                                          {TypeId::kAFilterHokanLpf, 6}};
  for (const ComponentInfo& info : kComponents) {
    ComponentX* const component = graph.Find(info.typeId);
    ASSERT_NE(component, nullptr) << info.name;
    const auto it = expected.find(info.typeId);
    EXPECT_EQ(component->context(), it == expected.end() ? 0 : it->second) << info.name;
    EXPECT_EQ(component->width(), info.typeId == TypeId::kLastStageRgb ? 48 : 16);
  }
}

}  // namespace
}  // namespace deimg

// Whatever fails, the host gets the right code, nothing is kept, and the next job is as good as the
// first: every allocation and every call of the host's streams is made to fail in turn.
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

#include "support/job_kinds.h"
#include "support/temporary_directory.h"

namespace deimg::testing {
namespace {

constexpr std::uint32_t kHostsCode = 0xBADC0DE;

// How allocations are numbered at first: the directory and the property block, a handle for the
// block and one for its sub-heap, the probe for the plane.
constexpr std::int64_t kPropertyBlocks = 2;
constexpr std::int64_t kProbe = kPropertyBlocks + 2 + 1;

using Case = std::tuple<JobKind, bool, bool>;  // kind, plane in a file, big-endian

class FaultsTest : public ::testing::TestWithParam<Case> {
 protected:
  FaultsTest() {
    rawfile::RawFile camera = SmallCamera(3);
    camera.order = std::get<2>(GetParam()) ? rawfile::ByteOrder::kBig : rawfile::ByteOrder::kLittle;
    camera.properties.processingSet = 0;  // every table of every stage
    // One sub-heap, met only on the way to the last property.
    camera.properties.order.assign(rawfile::kPropertyTags.begin(), rawfile::kPropertyTags.end());
    camera.properties.paths = {{rawfile::kTagTuningBlock, {0x2001}}};
    file_ = rawfile::Serialize(camera);
    expected_ = Run().lines;
    EXPECT_FALSE(expected_.empty());
  }
  ~FaultsTest() override {
    const Outcome next = Run();
    EXPECT_EQ(next.result, DEIMG_OK);
    EXPECT_EQ(next.lines, expected_);
  }

  const JobKind& kind() const { return std::get<0>(GetParam()); }
  bool inFile() const { return std::get<1>(GetParam()); }

  Outcome Run(HeapFaults faults = {}, const Fault& atInput = {}, const Fault& atOutput = {}) {
    if (inFile()) faults.largest = PlaneInFile().largest;
    Outcome outcome = RunJob(kind(), file_, faults, atInput, atOutput);
    EXPECT_TRUE(temporary_.IsEmpty());
    return outcome;
  }

  /// What the failure of the n-th allocation has to come to.
  std::uint32_t CodeAt(std::int64_t n, bool andAllAfter) const {
    if (n <= kPropertyBlocks) return DEIMG_PROPS_OUT_OF_MEMORY;
    if (n < kProbe) return DEIMG_PROPS_UNREADABLE;
    // Without room for the probe, the plane goes to a file.
    if (n == kProbe) return andAllAfter ? DEIMG_NO_TEMPORARY_STREAM : DEIMG_OK;
    if (inFile() && n <= kProbe + 2) return DEIMG_NO_TEMPORARY_STREAM;
    return DEIMG_OUT_OF_MEMORY;
  }

  TemporaryDirectory temporary_;
  std::vector<std::uint8_t> file_;
  std::vector<std::vector<std::uint8_t>> expected_;
};

TEST_P(FaultsTest, EveryAllocation) {
  for (const bool andAllAfter : {false, true}) {
    int recovered = 0;
    std::int64_t n = 1;
    for (bool reached = true; reached; ++n) {
      SCOPED_TRACE(::testing::Message() << "allocation " << n << ", all after: " << andAllAfter);
      const Outcome outcome = Run({.failAt = n, .andAllAfter = andAllAfter});
      reached = FaultScope::Allocations() >= n;
      // The reduction goes position by position when memory does not suffice for all four.
      if (outcome.result == DEIMG_OK && reached && n > kProbe) {
        ++recovered;
      } else {
        ASSERT_EQ(outcome.result, reached ? CodeAt(n, andAllAfter) : 0);
      }
      EXPECT_TRUE(outcome.result != DEIMG_OK || outcome.lines == expected_);
      EXPECT_TRUE(n % 8 != 0 || Run().lines == expected_) << "the next job";
    }
    // For each position three blocks, and a file's stream of two; lines of a plane in a file.
    const int together = 4 * 5 + (inFile() ? 1 : 0);
    EXPECT_EQ(recovered, IsReduced(kind()) && !andAllAfter ? together : 0);
    EXPECT_GT(n, kProbe + 50);
  }
}

TEST_P(FaultsTest, EveryCallOfTheInput) {
  for (const Op op : {Op::kOpen, Op::kClose, Op::kRead, Op::kSeek, Op::kTell}) {
    bool reached = true;
    for (int n = 1; reached; ++n) {
      SCOPED_TRACE(::testing::Message() << "operation " << static_cast<int>(op) << " call " << n);
      reached = false;
      const Outcome outcome = Run({}, [&](Op o, int i) {
        if (o != op || i != n) return 0u;
        reached = true;
        return kHostsCode;
      });
      // What the decoder's close reports is not looked at.
      const bool counts = reached && !(op == Op::kClose && n == 2);
      ASSERT_EQ(outcome.result, counts ? kHostsCode : 0);
      EXPECT_EQ(outcome.lines, counts ? decltype(expected_){} : expected_);
      EXPECT_TRUE(reached || n > 2);
    }
  }
}

/// This is also how a host cancels: at every report and at every line.
TEST_P(FaultsTest, EveryCallOfTheOutput) {
  std::vector<int> calls;
  for (const Op op : {Op::kOpen, Op::kWrite, Op::kProgress, Op::kClose}) {
    bool reached = true;
    calls.push_back(-1);
    for (int n = 1; reached; ++n) {
      SCOPED_TRACE(::testing::Message() << "operation " << static_cast<int>(op) << " call " << n);
      reached = false;
      ++calls.back();
      int callsAfter = 0;
      const auto count = [&](Op, int) { return callsAfter += reached ? 1 : 0, 0u; };
      const Outcome outcome = Run({}, count, [&](Op o, int i) {
        if (o != op || i != n) return count(o, i);
        reached = true;
        return kHostsCode;
      });
      ASSERT_EQ(outcome.result, reached ? kHostsCode : 0);
      EXPECT_EQ(callsAfter, 0);
      EXPECT_TRUE(reached || outcome.lines == expected_);
    }
  }
  EXPECT_EQ(calls, (std::vector<int>{1, static_cast<int>(expected_.size()), calls[2], 1}));
  EXPECT_GE(calls[2], 5) << "reports";
}

std::string NameOf(const ::testing::TestParamInfo<Case>& instance) {
  const auto& [kind, inFile, bigEndian] = instance.param;
  return std::string(kind.name) + (inFile ? "InFile" : "InMemory") + (bigEndian ? "MM" : "II");
}

INSTANTIATE_TEST_SUITE_P(Jobs, FaultsTest,
                         ::testing::Combine(::testing::ValuesIn(kJobKinds), ::testing::Bool(),
                                            ::testing::Bool()),
                         NameOf);

TEST(StreamsTest, ShortReads) {
  // Coded data longer than one buffer: most of the first one is skipped.
  rawfile::RawFile camera = SmallCamera(5);
  camera.properties.decoder.dataSkip1 = 65000;
  camera.properties.decoder.dataSkip2 = 400;
  const auto file = rawfile::Serialize(camera);
  const Outcome whole = Develop(file, DEIMG_JOB_FULL, DEIMG_FORMAT_8BIT);
  // Header, directory offset, entry count, directory, block; low bits, first coded bytes, more.
  constexpr int kPropertyReads = 5;
  constexpr int kRefills = kPropertyReads + 3;
  int reads = kRefills;
  for (int n = 1; n <= reads; ++n) {
    for (const std::uint32_t less : {1u, 2u, 3u, 7u, 64u, UINT32_MAX}) {
      SCOPED_TRACE(::testing::Message() << "read " << n << " short by " << less);
      InputStream input(file);
      input.cut = [&](int i, std::uint32_t wanted) {
        const std::uint32_t given = i >= kRefills ? std::min(wanted, 97u) : wanted;
        return i == n ? given - std::min(given, less) : given;
      };
      OutputStream output;
      const FaultScope scope({});
      const std::uint32_t result = RunJob(kJobKinds[0], input, output);
      EXPECT_EQ(FaultScope::Live(), 0);
      reads = std::max(reads, input.count(Op::kRead));
      // From the refills on, only the end of the input is a failure.
      if (n >= kRefills && (less != UINT32_MAX || input.count(Op::kRead) < n)) {
        EXPECT_EQ(result, DEIMG_OK);
        EXPECT_EQ(output.lines, whole.lines);
      } else {
        EXPECT_EQ(result, n <= kPropertyReads ? DEIMG_PROPS_UNREADABLE : DEIMG_BAD_DATA);
      }
    }
  }
  EXPECT_GT(reads, kRefills + 5);
}

TEST(StreamsTest, MissingOperations) {
  const auto file = rawfile::Serialize(SmallCamera(6));
  const auto remove = [](CallerStream& stream, std::size_t operation) {
    std::memset(reinterpret_cast<char*>(&stream) + operation, 0, sizeof(stream.Open));
  };
  constexpr std::size_t kNeeded[] = {offsetof(CallerStream, Open),  offsetof(CallerStream, Close),
                                     offsetof(CallerStream, Read),  offsetof(CallerStream, Seek),
                                     offsetof(CallerStream, Tell),  offsetof(CallerStream, Open),
                                     offsetof(CallerStream, Close), offsetof(CallerStream, Write)};
  for (const JobKind& kind : kJobKinds) {
    for (std::size_t i = 0; i < std::size(kNeeded);
         ++i) {  // five of the input, three of the output
      InputStream input(file);
      OutputStream output;
      remove(i < 5 ? *input.get() : *output.get(), kNeeded[i]);
      const FaultScope scope({});
      EXPECT_EQ(RunJob(kind, input, output), DEIMG_MISSING) << kind.name << i;
      EXPECT_EQ(FaultScope::Live(), 0);
      EXPECT_TRUE(output.lines.empty());
    }
  }
}

}  // namespace
}  // namespace deimg::testing

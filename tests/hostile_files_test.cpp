// Bad files: whatever is in them, a job ends with a code or a picture, inside the stated bounds of
// time and memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>

#include "support/job_kinds.h"
#include "support/memory_bounds.h"
#include "support/temporary_directory.h"

namespace deimg::testing {
namespace {

using rawfile::Bytes;

// Sanitizers have memory of their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__clang__)
constexpr bool kResidentSetTells = false;
#else
constexpr bool kResidentSetTells = true;
#endif

/// Each bound is one that a job comes near, so that a job that needs more is noticed: the peaks of
/// its phases, on a plane whose bounds tell apart.
TEST(HostileFiles, MemoryOfEachPhase) {
  rawfile::RawFile camera = SmallCamera(31);
  camera.SetPlane({2400, 600, std::vector<std::uint16_t>(2400u * 600u, 700)});
  camera.properties.sensor.area = {0, 0, 2399, 599};
  camera.properties.extras = {{0x0700, Bytes(500000), {}, false}};
  const Bytes file = rawfile::Serialize(camera);
  const MemoryBounds bounds(file);
  for (const std::uint32_t flags : {DEIMG_JOB_FULL, DEIMG_JOB_THUMBNAIL}) {
    std::size_t properties = 0, decoding = 0, reduction = 0, graph = 0;
    const Fault atInput = [&](Op op, int n) {
      if (op == Op::kClose) (n == 1 ? properties : decoding) = FaultScope::TakePeak();
      if (op == Op::kOpen && n == 2) FaultScope::TakePeak();  // the probe's
      return 0u;
    };
    const Fault atOutput = [&](Op op, int n) {
      // A thumbnail reports when its mosaic is reduced, and when its picture is developed.
      if (op == Op::kProgress && n == 2 && flags == DEIMG_JOB_THUMBNAIL) {
        reduction = FaultScope::TakePeak();
      }
      if ((op == Op::kProgress && n == 3 && flags == DEIMG_JOB_THUMBNAIL) || op == Op::kClose) {
        graph = std::max(graph, FaultScope::TakePeak());
      }
      return 0u;
    };
    InputStream input(file, atInput);
    OutputStream output(DEIMG_PROGRESS_ALL, atOutput);
    const FaultScope scope(HeapFaults{});
    ASSERT_EQ(DEImg_DevelopM480(input.get(), flags, DEIMG_FORMAT_16BIT, nullptr, output.get()), 0u);
    const auto near = [](std::size_t peak, std::size_t bound) {
      EXPECT_LE(peak, bound);
      EXPECT_GE(peak, bound / 4);
    };
    near(properties, bounds.properties);
    near(decoding - bounds.plane, bounds.lowBits);
    if (flags == DEIMG_JOB_FULL) {
      near(graph - bounds.plane, bounds.graph);
    } else {
      near(reduction - bounds.plane, bounds.reduction);
      const std::size_t reduced = (std::size_t{1} << 10) * 400 + (512u << 10);
      near(graph - bounds.plane, bounds.plane / 9 + reduced + bounds.picture);
    }
  }
}

/// Runs a full job, which may end with a picture, inside the bounds on memory and time.
std::uint32_t Survive(const Bytes& file) {
  const std::size_t bound = MemoryBounds(file).largest();
  const FaultScope scope(HeapFaults{});
  const auto start = std::chrono::steady_clock::now();
  const std::uint32_t result = Develop(file, DEIMG_JOB_FULL, DEIMG_FORMAT_16BIT).result;
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(FaultScope::Live(), 0);
  EXPECT_LE(FaultScope::PeakBytes(), bound);
  return result;
}

/// A small file without sub-heaps.
rawfile::RawFile PlainCamera(std::uint64_t seed) {
  rawfile::RawFile camera = SmallCamera(seed);
  camera.properties.paths.clear();
  camera.properties.extras.clear();
  return camera;
}

/// A value of the process's status, in bytes: "VmRSS:" what is in use, "VmHWM:" the most that was.
std::size_t Resident(const char* name) {
  std::ifstream status("/proc/self/status");
  std::size_t kib = 0;
  for (std::string word; status >> word;) {
    if (word == name) status >> kib;
  }
  return kib << 10;
}

TEST(HostileFiles, HugePlaneInASmallFile) {
  const TemporaryDirectory temporary;
  for (const bool lowBitsToo : {false, true}) {
    // 2,147,221,512 bytes in a file of 72 KB, or 128 MiB whose 16 MiB of low bits are there.
    rawfile::RawFile camera = PlainCamera(23);
    const std::uint16_t size = lowBitsToo ? 8192 : 32766;
    camera.properties.sensor.width = camera.properties.sensor.height = size;
    if (lowBitsToo) camera.coding.minimumCodedSize = std::size_t{size} * size / 4;
    const Bytes file = rawfile::Serialize(camera);
    for (const bool inFile : {false, true}) {
      InputStream input(file, [&](Op, int) {
        for (const auto& entry : std::filesystem::directory_iterator(temporary.path())) {
          EXPECT_EQ(entry.file_size(), 0u);
        }
        return 0u;
      });
      OutputStream output;
      const FaultScope scope(inFile ? HeapFaults{.largest = std::size_t{size} * size}
                                    : HeapFaults{});
      std::ofstream("/proc/self/clear_refs") << 5;  // begins a new mark
      const std::size_t before = Resident("VmRSS:");
      EXPECT_EQ(RunJob(kJobKinds[0], input, output), DEIMG_BAD_DATA);
      const std::size_t used = Resident("VmHWM:") - before;
      EXPECT_EQ(FaultScope::Live(), 0);
      EXPECT_TRUE(!kResidentSetTells || used < (lowBitsToo ? 20u << 20 : 4u << 20)) << used;
    }
  }
}

TEST(HostileFiles, WidestPlane) {
  rawfile::RawFile camera = PlainCamera(26);
  camera.SetPlane({65534, 2, std::vector<std::uint16_t>(2 * 65534, 0)});
  EXPECT_EQ(Survive(rawfile::Serialize(camera)), DEIMG_OK);
}

/// A heap with `levels` of sub-heaps below it; each level names the next one `fanOut` times.
Bytes Bomb(int levels, int fanOut) {
  Bytes inner;
  for (int level = 0; level <= levels; ++level) {
    rawfile::Heap heap;
    heap.Add(0x0700, inner);
    std::array<std::uint8_t, 8> place{};  // its size; it lies at the start
    for (std::size_t i = 0; i < 4; ++i) place[i] = static_cast<std::uint8_t>(inner.size() >> 8 * i);
    for (int i = 0; i < fanOut; ++i) heap.AddInEntry(level == 0 ? 0x4701 : 0x2001, place);
    inner = heap.Serialize(rawfile::ByteOrder::kLittle);
  }
  return inner;
}

TEST(HostileFiles, SubHeapBombs) {
  rawfile::RawFile camera = PlainCamera(24);
  camera.order = rawfile::ByteOrder::kLittle;
  const auto with = [&](const Bytes& bomb) {
    camera.properties.extras = {{0x2000, bomb, {}, true}};
    return rawfile::Serialize(camera);
  };
  // In front of the last of the fourteen: the sub-heap, one more entry in it, thirteen others.
  constexpr int kMost = 65536 - 1 - 1 - 14;
  EXPECT_EQ(Survive(with(Bomb(0, 5))), DEIMG_OK);
  camera.properties.order.assign(rawfile::kPropertyTags.begin(), rawfile::kPropertyTags.end());
  EXPECT_EQ(Survive(with(Bomb(0, kMost))), DEIMG_OK);
  EXPECT_EQ(Survive(with(Bomb(0, kMost + 1))), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(Survive(with(Bomb(15, 1))), DEIMG_OK);
  EXPECT_EQ(Survive(with(Bomb(16, 1))), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(Survive(with(Bomb(15, 900))), DEIMG_PROPS_UNREADABLE);  // 900 to the 16th entries
}

TEST(HostileFiles, StreamsThatLieAboutTheirSize) {
  const Bytes file = rawfile::Serialize(PlainCamera(25));
  static std::uint32_t told;
  for (const std::uint32_t size : {0u, 25u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    told = size;
    InputStream input(file);
    input.get()->Tell = [](void*, std::uint32_t* error) { return *error = 0, told; };
    OutputStream output;
    EXPECT_EQ(RunJob(kJobKinds[0], input, output), DEIMG_PROPS_UNREADABLE);
  }
}

}  // namespace
}  // namespace deimg::testing

// Bad files: whatever is in them, a job ends with a code or a picture, inside the stated bounds of
// time and memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>

#include "props/image_props.h"
#include "support/job_kinds.h"
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

/// The plane that a file declares; none when it cannot be read.
SensorRecord Declared(const Bytes& file) {
  InputStream input(file);
  ImagePropsBlock block;
  ImageProps props{};
  const bool read = ReadImagePropsBlock(*input.get(), block) == DEIMG_OK &&
                    pxfPsReadOpenImageProps(block, props) == DEIMG_OK;
  return read ? props.sensor : SensorRecord{};
}

/// The documented bounds on memory.
struct MemoryBounds {
  explicit MemoryBounds(const Bytes& file) {
    const SensorRecord sensor = Declared(file);
    plane = std::size_t{2} * sensor.width * sensor.height;
    properties = file.size() + (64u << 10);
    lowBits = plane / 8 + (96u << 10);
    reduction = plane / 9 + 1024u * std::size_t{sensor.width};
    graph = 1024u * std::size_t{sensor.width} + (512u << 10);
    picture = plane / 24 + 57600;
  }
  std::size_t plane, properties, lowBits, reduction, graph, picture;
  static constexpr std::size_t kProbe = (std::size_t{2} << 20) + (64u << 10);

  std::size_t largest() const {
    return plane + std::max({properties, lowBits, kProbe, reduction, plane / 9 + graph + picture});
  }
};

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

/// Runs a job that may end with a picture (true) or with one of the codes for bad files.
bool Survives(const Bytes& file, std::uint32_t flags, bool inFile) {
  const std::size_t bound = MemoryBounds(file).largest();
  const FaultScope scope(inFile ? PlaneInFile() : HeapFaults{});
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome = Develop(file, flags, DEIMG_FORMAT_16BIT);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(FaultScope::Live(), 0);
  EXPECT_LE(FaultScope::PeakBytes(), bound);
  constexpr std::uint32_t kCodes[] = {DEIMG_OK,
                                      DEIMG_BAD_TUNING,
                                      DEIMG_BAD_DATA,
                                      DEIMG_OUT_OF_MEMORY,
                                      DEIMG_UNSUPPORTED,
                                      DEIMG_PROPS_UNREADABLE,
                                      DEIMG_PROPS_DIRECTORY_TOO_LARGE};
  EXPECT_EQ(std::ranges::count(kCodes, outcome.result), 1) << outcome.result;
  return outcome.result == DEIMG_OK;
}

/// A small file with everything at the top level and the directories known.
rawfile::RawFile PlainCamera(std::uint64_t seed) {
  rawfile::RawFile camera = SmallCamera(seed);
  camera.properties.paths.clear();
  camera.properties.trailing.clear();
  camera.properties.extras.clear();
  camera.propertyLayout = camera.topLayout = {};
  camera.recordsBefore.clear();
  camera.recordsBehind.clear();
  return camera;
}

TEST(HostileFiles, Truncated) {
  const TemporaryDirectory temporary;
  rawfile::RawFile camera = PlainCamera(21);
  camera.dataInHeader = true;
  const Bytes whole = rawfile::Serialize(camera);
  const std::size_t dataEnd =
      26 + EncodeSensorData(camera.plane, camera.properties.decoder, camera.coding).size();
  // Behind every byte of the header, the low bits, the coded data and the properties, and behind
  // every 499th of the padding.
  const auto next = [&](std::size_t n) { return n + (n < 4000 || n >= dataEnd ? 1 : 499); };
  for (std::size_t n = 0; n < whole.size(); n = next(n)) {
    EXPECT_FALSE(Survives({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n)},
                          n % 2 == 0 ? DEIMG_JOB_FULL : DEIMG_JOB_PREVIEW, n % 7 == 0));
  }
  // The sensor data cut short, and the properties moved up to them.
  for (std::size_t n = 26; n < dataEnd; n = next(n)) {
    Bytes cut = whole;
    cut.erase(cut.begin() + static_cast<std::ptrdiff_t>(n),
              cut.begin() + static_cast<std::ptrdiff_t>(dataEnd));
    rawfile::ByteWriter headerLength(camera.order);
    headerLength.U32(static_cast<std::uint32_t>(n));
    std::ranges::copy(headerLength.Take(), cut.begin() + 2);
    const bool enough = cut.size() >= 26 + camera.plane.samples.size() / 4 + 65536;
    EXPECT_TRUE(Develop(cut, 0, 4).result == DEIMG_BAD_DATA || enough) << n;
  }
  EXPECT_TRUE(temporary.IsEmpty());
}

TEST(HostileFiles, EveryBitOfWhatDescribesTheRest) {
  const TemporaryDirectory temporary;
  const rawfile::RawFile camera = PlainCamera(22);
  const Bytes whole = rawfile::Serialize(camera);
  const auto record = [&](std::uint16_t tag) {
    const Bytes bytes = rawfile::PropertyBytes(camera.properties, tag, camera.order);
    const auto at = std::search(whole.begin(), whole.end(), bytes.begin(), bytes.end());
    return std::pair(static_cast<std::size_t>(at - whole.begin()), bytes.size());
  };
  // Header, top directory and its offset, block directory and its offset, geometry, decoder.
  constexpr std::size_t kTopEnd = 2 + 10 + 4;
  constexpr std::size_t kBlockEnd = 2 + 14 * 10 + 4;
  const std::pair<std::size_t, std::size_t> parts[] = {
      {0, 26},
      {whole.size() - kTopEnd - kBlockEnd, kTopEnd + kBlockEnd},
      record(rawfile::kTagSensor),
      record(rawfile::kTagDecoder)};
  int pictures = 0;
  Bytes file = whole;
  for (const auto& [start, size] : parts) {
    for (std::size_t bit = 0; bit < 8 * size; ++bit) {
      file[start + bit / 8] ^= static_cast<std::uint8_t>(1u << bit % 8);
      pictures += Survives(file, bit % 3 == 0 ? DEIMG_JOB_THUMBNAIL : DEIMG_JOB_FULL, bit % 5 == 0);
      file[start + bit / 8] = whole[start + bit / 8];
    }
  }
  EXPECT_GT(pictures, 100);
  EXPECT_TRUE(temporary.IsEmpty());
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
  EXPECT_TRUE(Survives(rawfile::Serialize(camera), DEIMG_JOB_FULL, false));
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
  EXPECT_TRUE(Survives(with(Bomb(0, 5)), DEIMG_JOB_FULL, false));
  camera.properties.order.assign(rawfile::kPropertyTags.begin(), rawfile::kPropertyTags.end());
  EXPECT_TRUE(Survives(with(Bomb(0, kMost)), DEIMG_JOB_FULL, false));
  EXPECT_EQ(Develop(with(Bomb(0, kMost + 1)), 0, 4).result, DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(Develop(with(Bomb(15, 1)), 0, 4).result, DEIMG_OK);
  EXPECT_EQ(Develop(with(Bomb(16, 1)), 0, 4).result, DEIMG_PROPS_UNREADABLE);
  EXPECT_FALSE(Survives(with(Bomb(15, 900)), DEIMG_JOB_FULL, false));  // 900 to the 16th entries
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

// The sensor plane decoder against the plainest statement of the code, bit by bit.
#include <algorithm>
#include <vector>

#include "base/byte_order.h"
#include "decode/sensor_plane_decoder.h"
#include "job.h"
#include "pipeline/levels.h"
#include "plain_decoder.h"
#include "storage/memory_stream.h"
#include "support/fault_heap.h"

using namespace deimg;

namespace {

struct Recipe {
  enum How : std::uint8_t {
    kCodeSet = 3,
    kThroughStream = 8,
    kBestLevel = 64,
    kSmallPortions = 128
  };
  enum Fault : std::uint8_t { kNone, kHeap, kInput, kInputOperation, kPlaneOperation, kPlaneOpen };

  std::uint8_t how;    // code set and How
  std::uint8_t width;  // pairs of columns
  std::uint8_t height;
  std::uint8_t fillValue;
  std::uint8_t before[2];  // coded bytes of the input that still belong to the first read
  std::uint8_t skipLess;   // coded bytes of filler decoded in front of the input
  std::uint8_t fault;      // Fault
  std::uint8_t faultAt;    // the allocation or call that fails, the operation that is null
};

/// Takes one of the operations that the decoder needs away.
void Remove(CallerStream& stream, std::uint8_t which, bool isPlane) {
  if (which % 4 == 0) stream.Open = nullptr;
  if (which % 4 == 1) stream.Close = nullptr;
  if (which % 4 == 2) stream.Seek = nullptr;
  if (which % 4 == 3 && isPlane) stream.Write = nullptr;
  if (which % 4 == 3 && !isPlane) stream.Read = nullptr;
}

void RefuseToOpen(void* /*cookie*/, std::uint16_t /*mode*/, std::uint32_t* error) { *error = 1; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Bytes coded(data, size);
  Recipe recipe;
  if (!fuzz::Take(coded, recipe)) return 0;
  ImageGeometry geometry{};
  geometry.sensorWidth = static_cast<std::uint16_t>(8 + recipe.width % 64 * 2);
  geometry.sensorHeight = static_cast<std::uint16_t>(2 + recipe.height % 64);
  const std::uint32_t samples = std::uint32_t{geometry.sensorWidth} * geometry.sensorHeight;

  // The input's bytes lie across the end of the first read of 65,536 bytes.
  const auto before = static_cast<std::uint32_t>(std::min<std::size_t>(
      LoadU16(recipe.before, false), std::min<std::size_t>(coded.size(), 65535)));
  const std::uint32_t fill = 26 + samples / 4 + 65536 - before;
  const std::uint32_t start =
      65536 - before - std::min<std::uint32_t>(recipe.skipLess, 65536 - before);
  static ImageProps props{};
  props.decoder[0] = recipe.how & Recipe::kCodeSet;
  props.decoder[1] = start / 3;
  props.decoder[2] = start - start / 3;

  testing::HeapFaults faults;
  // The plane, its state and its stream are made before anything may fail.
  if (recipe.fault == Recipe::kHeap) faults.failAt = 4 + recipe.faultAt;
  const testing::FaultScope scope(faults);
  {
    const int wholeReads =
        recipe.how < Recipe::kSmallPortions ? INT_MAX : 2;  // low bits, first coded bytes
    const int failAt = recipe.fault == Recipe::kInput ? recipe.faultAt : 0;
    fuzz::PieceStream input({{}, fill, recipe.fillValue, coded}, wholeReads, failAt);
    MemoryStream plane = MemoryStream::Make(2 * samples);
    if (recipe.fault == Recipe::kInputOperation) Remove(*input.get(), recipe.faultAt, false);
    if (recipe.fault == Recipe::kPlaneOperation) Remove(*plane.get(), recipe.faultAt, true);
    if (recipe.fault == Recipe::kPlaneOpen) plane.get()->Open = RefuseToOpen;
    const Level& level = (recipe.how & Recipe::kBestLevel) != 0 ? ChosenLevel() : Levels()[0];
    const bool inMemory = (recipe.how & Recipe::kThroughStream) == 0;
    const Result result = SensorPlaneDecoder(level.planeLines(), *input.get(), geometry, props,
                                             {*plane.get(), inMemory ? plane.samples() : nullptr});

    const bool heapFailed =
        faults.failAt > 0 && testing::FaultScope::Allocations() >= faults.failAt;
    if (input.failed()) {
      fuzz::Require(result == fuzz::kInputFailed, "the code of the input");
    } else if (heapFailed) {
      fuzz::Require(result == DEIMG_OUT_OF_MEMORY, "the code of missing memory");
    } else if (recipe.fault == Recipe::kInputOperation || recipe.fault == Recipe::kPlaneOperation) {
      fuzz::Require(result == DEIMG_MISSING, "the code of a missing operation");
    } else if (recipe.fault == Recipe::kPlaneOpen) {
      fuzz::Require(result == DEIMG_NO_WORK_FILE, "the code of a plane that does not open");
    } else {
      static std::vector<std::uint8_t> bits;
      bits.assign(65536 - before - start, recipe.fillValue);
      bits.insert(bits.end(), coded.begin(), coded.end());
      static std::vector<std::uint16_t> expected;
      expected.clear();
      // A start outside the first read is refused before a bit is looked at.
      const bool fits =
          start < 65536 && fuzz::PlainDecode(bits, recipe.fillValue, props.codeSetIndex(),
                                             geometry.sensorWidth, samples, expected);
      fuzz::Require((result == DEIMG_OK) == fits && (fits || result == DEIMG_BAD_DATA),
                    "the plain decoder's result");
      for (std::size_t i = 0; fits && i < expected.size(); ++i) {
        const std::uint8_t* const s = plane.memory() + 2 * i;
        fuzz::Require((s[0] | s[1] << 8) == expected[i], "the plain decoder's samples");
      }
    }
  }
  fuzz::Require(testing::FaultScope::Live() == 0, "every block to be given back");
  return 0;
}

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
  std::uint8_t codeSet;  // bit 7: the input comes in small portions
  std::uint8_t width;    // pairs of columns
  std::uint8_t height;
  std::uint8_t fillValue;
  std::uint8_t before[2];  // coded bytes of the input that still belong to the first read
  std::uint8_t skipLess;   // coded bytes of filler decoded in front of the input
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Bytes coded(data, size);
  Recipe recipe;
  if (!fuzz::Take(coded, recipe)) return 0;
  ImageGeometry geometry{};
  geometry.sensorWidth = static_cast<std::uint16_t>(8 + recipe.width % 16 * 2);
  geometry.sensorHeight = static_cast<std::uint16_t>(2 + recipe.height % 16);
  const std::uint32_t samples = std::uint32_t{geometry.sensorWidth} * geometry.sensorHeight;

  // The input's bytes lie across the end of the first read of 65,536 bytes.
  const auto before = static_cast<std::uint32_t>(std::min<std::size_t>(
      LoadU16(recipe.before, false), std::min<std::size_t>(coded.size(), 65535)));
  const std::uint32_t fill = 26 + samples / 4 + 65536 - before;
  const std::uint32_t start =
      65536 - before - std::min<std::uint32_t>(recipe.skipLess, 65536 - before);
  ImageProps props{};
  props.decoder[0] = recipe.codeSet % 4;
  props.decoder[1] = start / 3;
  props.decoder[2] = start - start / 3;

  const testing::FaultScope scope({});
  {
    const int wholeReads = recipe.codeSet < 128 ? INT_MAX : 2;  // low bits, first coded bytes
    fuzz::PieceStream input({{}, fill, recipe.fillValue, coded}, wholeReads);
    MemoryStream plane = MemoryStream::Make(2 * samples);
    const Result result =
        SensorPlaneDecoder(ChosenLevel().planeLines(), *input.get(), geometry, props, *plane.get());

    std::vector<std::uint8_t> bits(65536 - before - start, recipe.fillValue);
    bits.insert(bits.end(), coded.begin(), coded.end());
    std::vector<std::uint16_t> expected;
    // A start outside the first read is refused before a bit is looked at.
    const bool fits = start < 65536 && fuzz::PlainDecode(bits, recipe.fillValue, recipe.codeSet % 4,
                                                         geometry.sensorWidth, samples, expected);
    fuzz::Require((result == DEIMG_OK) == fits && (fits || result == DEIMG_BAD_DATA),
                  "the plain decoder's result");
    for (std::size_t i = 0; fits && i < expected.size(); ++i) {
      const std::uint8_t* const s = plane.memory() + 2 * i;
      fuzz::Require((s[0] | s[1] << 8) == expected[i], "the plain decoder's samples");
    }
  }
  fuzz::Require(testing::FaultScope::Live() == 0, "every block to be given back");
  return 0;
}

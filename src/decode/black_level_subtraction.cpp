#include "decode/black_level_subtraction.h"

#include "props/byte_order.h"
#include "storage/mem_block.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

void SubtractAt(std::uint8_t* sample, std::int32_t level) {
  const std::int32_t value = LoadU16(sample, false);
  const std::int32_t corrected = level < value ? value - level : 0;
  sample[0] = static_cast<std::uint8_t>(corrected);
  sample[1] = static_cast<std::uint8_t>(corrected >> 8);
}

}  // namespace

void SubtractLevelsLine(std::int32_t evenColumns, std::int32_t oddColumns, std::uint32_t width,
                        std::uint8_t* littleEndianSamples) {
  for (std::uint32_t x = 0; x < 2 * width; x += 4) {
    SubtractAt(littleEndianSamples + x, evenColumns);
    SubtractAt(littleEndianSamples + x + 2, oddColumns);
  }
}

Result BlackLevelSubtraction(const ImageGeometry& geometry, CallerStream& plane,
                             const std::uint16_t (&blackLevelWords)[4]) {
  DEIMG_RETURN_IF_FAILED(Open(plane, DEIMG_OPEN_UPDATE));
  const BlackLevels black = {blackLevelWords[0], blackLevelWords[1], blackLevelWords[2],
                             blackLevelWords[3]};
  const std::uint32_t lineBytes = 2u * geometry.sensorWidth;
  const auto line = BlockOf<std::uint8_t>::Zeroed(lineBytes);
  if (!line) return DEIMG_OUT_OF_MEMORY;
  for (std::uint32_t y = 0; y < geometry.sensorHeight; ++y) {
    (void)SeekTo(plane, lineBytes * y);
    std::uint32_t delivered = 0;
    DEIMG_RETURN_IF_FAILED(Read(plane, line.get(), lineBytes, delivered));
    const std::size_t odd = y % 2 != 0 ? 2 : 0;
    SubtractLevelsLine(black[odd + 1], black[odd], geometry.sensorWidth, line.get());
    (void)SeekTo(plane, lineBytes * y);
    DEIMG_RETURN_IF_FAILED(Write(plane, line.get(), lineBytes));
  }
  return Close(plane);
}

}  // namespace deimg

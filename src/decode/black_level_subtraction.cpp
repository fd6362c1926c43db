#include "decode/black_level_subtraction.h"

#include "base/byte_order.h"
#include "storage/mem_block.h"
#include "storage/stream_calls.h"

namespace deimg {

void SubtractBlackLevels(const PlaneLines& lines, const std::uint16_t (&blackLevelWords)[4],
                         std::uint32_t y, std::uint32_t width, std::uint16_t* line) {
  const std::size_t odd = y % 2 != 0 ? 2 : 0;
  lines.subtractLevels(blackLevelWords[odd + 1], blackLevelWords[odd], static_cast<int>(width),
                       line);
}

Result BlackLevelSubtraction(const PlaneLines& lines, const ImageGeometry& geometry,
                             CallerStream& plane, const std::uint16_t (&blackLevelWords)[4]) {
  DEIMG_RETURN_IF_FAILED(Open(plane, DEIMG_OPEN_UPDATE));
  const std::uint32_t lineBytes = 2u * geometry.sensorWidth;
  const auto line = BlockOf<std::uint16_t>::Zeroed(geometry.sensorWidth);
  if (!line) return DEIMG_OUT_OF_MEMORY;
  for (std::uint32_t y = 0; y < geometry.sensorHeight; ++y) {
    (void)SeekTo(plane, lineBytes * y);
    std::uint32_t delivered = 0;
    DEIMG_RETURN_IF_FAILED(Read(plane, line.get(), lineBytes, delivered));
    if (delivered < lineBytes) return DEIMG_FILE_READ;
    ToLittleEndian(line.get(), geometry.sensorWidth);  // and back, which is the same
    SubtractBlackLevels(lines, blackLevelWords, y, geometry.sensorWidth, line.get());
    ToLittleEndian(line.get(), geometry.sensorWidth);
    (void)SeekTo(plane, lineBytes * y);
    DEIMG_RETURN_IF_FAILED(Write(plane, line.get(), lineBytes));
  }
  return Close(plane);
}

}  // namespace deimg

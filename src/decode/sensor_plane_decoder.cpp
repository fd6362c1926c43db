#include "decode/sensor_plane_decoder.h"

#include <algorithm>
#include <optional>

#include "decode/coded_data_reader.h"
#include "decode/plane_writer.h"
#include "storage/mem_block.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr std::uint32_t kLowBitsPosition = 26;

Result DecodePlane(CodedDataReader& reader, std::uint32_t blocks, PlaneWriter& writer) {
  DifferenceBlocks differences;
  for (std::uint32_t done = 0; done < blocks; done += DifferenceBlocks::kMost) {
    const std::uint32_t count = std::min(DifferenceBlocks::kMost, blocks - done);
    DEIMG_RETURN_IF_FAILED(reader.Decode(count, differences));
    DEIMG_RETURN_IF_FAILED(writer.Append(count, differences));
  }
  return writer.Finish();
}

}  // namespace

Result SensorPlaneDecoder(const PlaneLines& lines, CallerStream& input,
                          const ImageGeometry& geometry, const ImageProps& props,
                          const SensorPlane& plane, const LinesListener& listener) {
  if (input.Open == nullptr || input.Read == nullptr || input.Seek == nullptr ||
      input.Close == nullptr) {
    return DEIMG_MISSING;
  }
  DEIMG_RETURN_IF_FAILED(Open(input, DEIMG_OPEN_READ));
  // On every way out: the buffers go first, then the input is closed, then the plane.
  std::optional<ClosedOnExit> closePlane;
  const ClosedOnExit closeInput(input);
  CallerStream& stream = plane.stream;
  if (stream.Open == nullptr || stream.Write == nullptr || stream.Seek == nullptr ||
      stream.Close == nullptr) {
    return DEIMG_MISSING;
  }
  if (Open(stream, DEIMG_OPEN_TRUNCATE) != DEIMG_OK) return DEIMG_NO_WORK_FILE;
  closePlane.emplace(stream);

  const std::uint32_t samples =
      static_cast<std::uint32_t>(geometry.sensorWidth) * geometry.sensorHeight;
  const std::uint32_t lowBitsBytes = samples / 4;
  const auto lowBits = BlockOf<std::uint8_t>::Uninitialised(lowBitsBytes);
  if (!lowBits) return DEIMG_OUT_OF_MEMORY;
  // The host sees both operations before either error word counts.
  const Result sought = SeekTo(input, kLowBitsPosition);
  std::uint32_t delivered = 0;
  const Result read = Read(input, lowBits.get(), lowBitsBytes, delivered);
  DEIMG_RETURN_IF_FAILED(sought);
  DEIMG_RETURN_IF_FAILED(read);
  if (delivered < lowBitsBytes) return DEIMG_BAD_DATA;

  CodedDataReader reader(input, ChooseCodeSet(props.codeSetIndex()));
  if (!reader.AllocateBuffer()) return DEIMG_OUT_OF_MEMORY;
  DEIMG_RETURN_IF_FAILED(SeekTo(input, kLowBitsPosition + lowBitsBytes));
  DEIMG_RETURN_IF_FAILED(
      reader.Begin(std::uint64_t{props.dataSkip1()} + std::uint64_t{props.dataSkip2()}));
  PlaneWriter writer(lines, geometry, lowBits.get(), props.blackLevelWords, plane, listener);
  if (!writer.Allocate()) return DEIMG_OUT_OF_MEMORY;
  return DecodePlane(reader, samples / kBlockSamples, writer);
}

}  // namespace deimg

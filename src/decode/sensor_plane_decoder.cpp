#include "decode/sensor_plane_decoder.h"

#include <algorithm>
#include <optional>

#include "base/byte_order.h"
#include "decode/coded_data_reader.h"
#include "storage/mem_block.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr std::uint32_t kLowBitsPosition = 26;
constexpr std::uint32_t kBlockSamples = 64;
constexpr std::uint32_t kChunkSamples = 6400;
constexpr std::uint16_t kLineStart = 512;  // the predictors at the start of a line

/// Closes a stream at the end of the scope; what the close reports is of no interest here.
class ClosedOnExit {
 public:
  explicit ClosedOnExit(CallerStream& stream) : stream_(stream) {}
  ClosedOnExit(const ClosedOnExit&) = delete;
  ClosedOnExit& operator=(const ClosedOnExit&) = delete;
  ~ClosedOnExit() { (void)Close(stream_); }

 private:
  CallerStream& stream_;
};

/// Turns blocks of differences into samples. All sums are modulo 2^16, like the samples.
class Predictor {
 public:
  explicit Predictor(std::uint32_t width) : width_(width) {}

  /// Writes the block's 64 high parts (the samples without their low bits).
  void Reconstruct(DifferenceBlock& d, std::uint16_t* samples) {
    carry_ = static_cast<std::uint16_t>(carry_ + d[0]);
    d[0] = static_cast<std::int16_t>(carry_);
    if (column_ + kBlockSamples < width_) {
      Accumulate(d.data(), kBlockSamples, samples);
      column_ += kBlockSamples;
      return;
    }
    for (std::uint32_t i = 0; i < kBlockSamples; i += 4) {
      Accumulate(d.data() + i, 4, samples + i);
      column_ += 4;
      if (column_ >= width_) column_ -= width_;
      if (column_ == 0) even_ = odd_ = kLineStart;
    }
  }

 private:
  /// Even and odd entries continue a predictor each.
  void Accumulate(const std::int16_t* d, std::uint32_t count, std::uint16_t* samples) {
    std::uint32_t even = even_;
    std::uint32_t odd = odd_;
    for (std::uint32_t i = 0; i < count; i += 2) {
      samples[i] = static_cast<std::uint16_t>(even += static_cast<std::uint16_t>(d[i]));
      samples[i + 1] = static_cast<std::uint16_t>(odd += static_cast<std::uint16_t>(d[i + 1]));
    }
    even_ = static_cast<std::uint16_t>(even);
    odd_ = static_cast<std::uint16_t>(odd);
  }

  const std::uint32_t width_;
  std::uint32_t column_ = 0;  // samples produced, modulo the width
  std::uint16_t carry_ = 0;   // running sum of the blocks' first values
  std::uint16_t even_ = kLineStart;
  std::uint16_t odd_ = kLineStart;
};

Result WriteSamples(CallerStream& plane, std::uint16_t* samples, std::uint32_t count) {
  ToLittleEndian(samples, count);
  return Write(plane, samples, 2 * count);
}

Result DecodePlane(const PlaneLines& lines, CodedDataReader& reader, const std::uint8_t* lowBits,
                   std::uint32_t width, std::uint32_t samples, std::uint16_t* chunk,
                   CallerStream& plane) {
  Predictor predictor(width);
  std::uint32_t chunkCount = 0;
  for (std::uint32_t block = 0; block < samples / kBlockSamples; ++block) {
    DifferenceBlock differences;
    DEIMG_RETURN_IF_FAILED(reader.DecodeBlock(differences));
    predictor.Reconstruct(differences, chunk + chunkCount);
    chunkCount += kBlockSamples;
    if (chunkCount < kChunkSamples) continue;
    lines.mergeLowBits(lowBits, kChunkSamples, chunk);
    lowBits += chunkCount / 4;
    DEIMG_RETURN_IF_FAILED(WriteSamples(plane, chunk, chunkCount));
    chunkCount = 0;
  }
  lines.mergeLowBits(lowBits, static_cast<int>(chunkCount), chunk);
  const std::uint32_t undecoded = samples % kBlockSamples;
  std::fill_n(chunk + chunkCount, undecoded, std::uint16_t{0});
  chunkCount += undecoded;
  return chunkCount == 0 ? Result{DEIMG_OK} : WriteSamples(plane, chunk, chunkCount);
}

}  // namespace

Result SensorPlaneDecoder(const PlaneLines& lines, CallerStream& input,
                          const ImageGeometry& geometry, const ImageProps& props,
                          CallerStream& plane) {
  if (input.Open == nullptr || input.Read == nullptr || input.Seek == nullptr ||
      input.Close == nullptr) {
    return DEIMG_MISSING;
  }
  DEIMG_RETURN_IF_FAILED(Open(input, DEIMG_OPEN_READ));
  // On every way out: the buffers go first, then the input is closed, then the plane.
  std::optional<ClosedOnExit> closePlane;
  const ClosedOnExit closeInput(input);
  if (plane.Open == nullptr || plane.Write == nullptr || plane.Seek == nullptr ||
      plane.Close == nullptr) {
    return DEIMG_MISSING;
  }
  if (Open(plane, DEIMG_OPEN_TRUNCATE) != DEIMG_OK) return DEIMG_NO_WORK_FILE;
  closePlane.emplace(plane);

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
  const auto chunk = BlockOf<std::uint16_t>::Zeroed(kChunkSamples);
  if (!chunk) return DEIMG_OUT_OF_MEMORY;
  return DecodePlane(lines, reader, lowBits.get(), geometry.sensorWidth, samples, chunk.get(),
                     plane);
}

}  // namespace deimg

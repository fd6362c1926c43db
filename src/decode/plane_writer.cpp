#include "decode/plane_writer.h"

#include <algorithm>
#include <numeric>

#include "base/byte_order.h"
#include "decode/black_level_subtraction.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr std::array<std::uint16_t, 2> kLineStart = {512, 512};

}  // namespace

PlaneWriter::PlaneWriter(const PlaneLines& lines, const ImageGeometry& geometry,
                         const std::uint8_t* lowBits, const std::uint16_t (&blackLevels)[4],
                         const SensorPlane& plane, const LinesListener& listener)
    : lines_(lines),
      width_(geometry.sensorWidth),
      samples_(width_ * geometry.sensorHeight),
      lowBits_(lowBits),
      blackLevels_(blackLevels),
      plane_(plane),
      listener_(listener),
      period_(std::lcm(width_, 4u)),
      predictors_(kLineStart) {}

bool PlaneWriter::Allocate() {
  if (plane_.samples != nullptr) return true;
  chunk_ = BlockOf<std::uint16_t>::Zeroed(kChunkSamples);
  return static_cast<bool>(chunk_);
}

Result PlaneWriter::Append(std::uint32_t count, DifferenceBlocks& blocks) {
  // A block's first value counts from that of the block before.
  for (std::uint32_t i = 0; i < count; ++i) {
    carry_ = static_cast<std::uint16_t>(carry_ + blocks.block(i)[0]);
    blocks.block(i)[0] = static_cast<std::int16_t>(carry_);
  }
  const std::uint32_t fresh = count * kBlockSamples;
  if (plane_.samples != nullptr) {
    Reconstruct(blocks.block(0), fresh, plane_.samples + written_);
    written_ += fresh;
    FinishLines();
    return DEIMG_OK;
  }
  Reconstruct(blocks.block(0), fresh, chunk_.get() + chunkCount_);
  written_ += fresh;
  chunkCount_ += fresh;
  return chunkCount_ == kChunkSamples ? WriteChunk() : Result{DEIMG_OK};
}

Result PlaneWriter::Finish() {
  const std::uint32_t undecoded = samples_ - written_;
  std::uint16_t* const end =
      plane_.samples != nullptr ? plane_.samples + written_ : chunk_.get() + chunkCount_;
  std::fill_n(end, undecoded, std::uint16_t{0});
  written_ = samples_;
  if (plane_.samples != nullptr) {
    FinishLines();
    return DEIMG_OK;
  }
  chunkCount_ += undecoded;
  return chunkCount_ == 0 ? Result{DEIMG_OK} : WriteChunk();
}

void PlaneWriter::Reconstruct(const std::int16_t* differences, std::uint32_t count,
                              std::uint16_t* samples) {
  while (count > 0) {
    const std::uint32_t stretch = std::min(count, period_ - sincePeriod_);
    lines_.accumulate(differences, lowBits_, static_cast<int>(stretch), predictors_.data(),
                      samples);
    differences += stretch;
    lowBits_ += stretch / 4;
    samples += stretch;
    count -= stretch;
    sincePeriod_ += stretch;
    if (sincePeriod_ < period_) continue;
    sincePeriod_ = 0;
    predictors_ = kLineStart;
  }
}

void PlaneWriter::FinishLines() {
  const std::uint32_t whole = written_ / width_;
  if (whole == finishedLines_) return;
  for (; finishedLines_ < whole; ++finishedLines_) {
    std::uint16_t* const line = plane_.samples + std::size_t{finishedLines_} * width_;
    SubtractBlackLevels(lines_, blackLevels_, finishedLines_, width_, line);
    ToLittleEndian(line, width_);
  }
  if (listener_.linesReady != nullptr) {
    listener_.linesReady(listener_.self, static_cast<int>(finishedLines_));
  }
}

Result PlaneWriter::WriteChunk() {
  ToLittleEndian(chunk_.get(), chunkCount_);
  const Result result = Write(plane_.stream, chunk_.get(), 2 * chunkCount_);
  chunkCount_ = 0;
  return result;
}

}  // namespace deimg

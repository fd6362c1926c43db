/// From differences to the sensor plane.
#ifndef DEIMG_DECODE_PLANE_WRITER_H
#define DEIMG_DECODE_PLANE_WRITER_H

#include <array>
#include <cstdint>

#include "base/result.h"
#include "decode/coded_data_reader.h"
#include "decode/plane_lines.h"
#include "props/image_geometry.h"
#include "storage/mem_block.h"
#include "storage/sensor_plane.h"

namespace deimg {

/// Sums the differences up, appends the low bits and puts the samples into the plane, in raster
/// order. Lines in memory have their black levels subtracted as soon as they are whole; a file is
/// written in chunks, as decoded.
class PlaneWriter {
 public:
  /// `blackLevels` as in BlackLevelSubtraction; both arrays have to outlive the writer.
  PlaneWriter(const PlaneLines& lines, const ImageGeometry& geometry, const std::uint8_t* lowBits,
              const std::uint16_t (&blackLevels)[4], const SensorPlane& plane,
              const LinesListener& listener);

  /// Allocates the chunk for a file: false when memory is short.
  [[nodiscard]] bool Allocate();

  /// Appends the samples of the next blocks: as many as there is room for, but for the last time.
  /// Returns the error word of the stream.
  [[nodiscard]] Result Append(std::uint32_t count, DifferenceBlocks& blocks);

  /// Samples after the last whole block are 0.
  [[nodiscard]] Result Finish();

 private:
  void Reconstruct(const std::int16_t* differences, std::uint32_t count, std::uint16_t* samples);
  void FinishLines();
  [[nodiscard]] Result WriteChunk();

  static constexpr std::uint32_t kChunkSamples = 10 * DifferenceBlocks::kMost * kBlockSamples;

  const PlaneLines& lines_;
  const std::uint32_t width_;
  const std::uint32_t samples_;  // of the plane
  const std::uint8_t* lowBits_;  // of the next sample
  const std::uint16_t (&blackLevels_)[4];
  const SensorPlane plane_;
  const LinesListener listener_;
  BlockOf<std::uint16_t> chunk_;
  std::uint32_t chunkCount_ = 0;
  std::uint32_t written_ = 0;  // samples made so far
  std::uint32_t finishedLines_ = 0;

  // The predictors of even and odd columns begin anew where a line's end is one of four samples.
  const std::uint32_t period_;
  std::uint32_t sincePeriod_ = 0;
  std::array<std::uint16_t, 2> predictors_;
  std::uint16_t carry_ = 0;  // sum of the blocks' first values
};

}  // namespace deimg

#endif  // DEIMG_DECODE_PLANE_WRITER_H

/// The preview's reduction of one mosaic position.
#ifndef DEIMG_DECODE_POSITION_PASS_H
#define DEIMG_DECODE_POSITION_PASS_H

#include <array>
#include <cstdint>

#include "base/result.h"
#include "decode/plane_lines.h"
#include "props/image_geometry.h"
#include "storage/file_stream.h"
#include "storage/mem_block.h"

namespace deimg {

/// Line and column of a mosaic position in the sensor's cell.
struct Phase {
  std::uint32_t line;
  std::uint32_t column;
};

/// What the four positions have in common.
struct ReductionSizes {
  static constexpr std::uint32_t kGroupLines = 6;    // plane lines that become two rows
  static constexpr std::uint32_t kOverlapLines = 2;  // lines of the next group that a group needs

  std::uint32_t width;       // of the plane
  std::uint32_t cells;       // grid cells along a line: six columns each
  std::uint32_t groups;      // of six plane lines
  std::uint32_t rowSamples;  // of the temporary file
  std::uint32_t rows;

  explicit ReductionSizes(const ImageGeometry& g)
      : width(g.sensorWidth),
        cells(g.sensorWidth / kGroupLines),
        groups(g.sensorHeight / kGroupLines),
        rowSamples(2 * cells),
        rows(2 * groups) {}
  /// A grid line, split into every third sample: `cells` + 1 for each third.
  std::uint32_t thirdSamples() const { return cells + 1; }
  std::uint32_t gridSamples() const { return 3 * thirdSamples(); }
};

/// Shrinks groups of plane lines to rows of a temporary file, and halves these to the result.
class PositionPass {
 public:
  PositionPass(const PlaneLines& lines, Phase phase) : lines_(lines), phase_(phase) {}

  [[nodiscard]] bool Allocate(const ReductionSizes& sizes, std::uint32_t groupsAtOnce);

  /// Makes the temporary file; 32 when it cannot be used.
  [[nodiscard]] Result OpenFile();

  /// Shrinks `groups` groups whose plane lines start at `lines`; `available` lines are there.
  [[nodiscard]] Result Shrink(const ReductionSizes& sizes, const std::uint16_t* lines,
                              std::uint32_t available, std::uint32_t groups);

  /// Halves the rows in the temporary file, `atOnce` lines of the result side by side, into a plane
  /// of `stride` samples a line, and gives the file back.
  [[nodiscard]] Result Finish(const ReductionSizes& sizes, std::uint32_t atOnce,
                              std::uint32_t stride, std::uint16_t* plane);

 private:
  void PickPosition(const ReductionSizes& sizes, const std::uint16_t* line,
                    std::uint16_t* samples) const;
  void ShrinkGroup(const ReductionSizes& sizes, const std::array<const std::uint16_t*, 4>& grid,
                   std::uint16_t* rows) const;
  [[nodiscard]] Result ReadRows(const ReductionSizes& sizes, std::uint32_t first,
                                std::uint32_t count, std::uint16_t* block);

  const PlaneLines& lines_;
  const Phase phase_;
  BlockOf<std::uint16_t> grid_;
  BlockOf<std::int32_t> sums_;
  BlockOf<std::uint16_t> rows_;
  FileStream file_;
};

}  // namespace deimg

#endif  // DEIMG_DECODE_POSITION_PASS_H

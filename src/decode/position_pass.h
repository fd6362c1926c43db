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

/// Shrinks groups of plane lines to rows of a temporary file, and halves these to the result as
/// soon as there are enough of them.
class PositionPass {
 public:
  /// The result has `stride` samples a line.
  PositionPass(const PlaneLines& lines, Phase phase, std::uint16_t* result, std::uint32_t stride)
      : lines_(lines), phase_(phase), result_(result), stride_(stride) {}

  [[nodiscard]] bool Allocate(const ReductionSizes& sizes, std::uint32_t groupsAtOnce);

  /// Makes the temporary file; 32 when it cannot be used.
  [[nodiscard]] Result OpenFile();

  /// Shrinks the next group, whose plane lines start at `lines`, to two thirds in each direction:
  /// two rows. `available` lines are there: enough, but where the plane ends.
  void ShrinkGroup(const ReductionSizes& sizes, const std::uint16_t* lines,
                   std::uint32_t available);

  /// Passes the rows of the groups since the last call, no more than there is room for, through the
  /// file and halves them. An error word of the file's Write, or 32.
  [[nodiscard]] Result HalveGroups(const ReductionSizes& sizes);

 private:
  /// Rows of the groups before that a result still needs.
  static constexpr std::uint32_t kKeptRows = 3;

  void PickPosition(const ReductionSizes& sizes, const std::uint16_t* line,
                    std::uint16_t* samples) const;
  void HalveRows(const ReductionSizes& sizes);

  const PlaneLines& lines_;
  const Phase phase_;
  std::uint16_t* const result_;
  const std::uint32_t stride_;
  std::uint32_t shrunk_ = 0;  // groups whose rows are in the file
  std::uint32_t fresh_ = 0;   // and groups whose rows are not yet
  BlockOf<std::uint16_t> samples_;
  std::array<std::uint16_t*, 4> grid_{};  // a group's lines in samples_
  BlockOf<std::int32_t> sums_;
  BlockOf<std::uint16_t> rows_;  // the kept ones, then the fresh ones
  FileStream file_;
};

}  // namespace deimg

#endif  // DEIMG_DECODE_POSITION_PASS_H

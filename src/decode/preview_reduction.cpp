#include "decode/preview_reduction.h"

#include <algorithm>
#include <array>

#include "base/byte_order.h"
#include "storage/file_stream.h"
#include "storage/mem_block.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr std::uint32_t kGroupLines = 6;    // plane lines that become two rows
constexpr std::uint32_t kOverlapLines = 2;  // lines of the next group that a group needs
constexpr std::uint32_t kGroupsAtOnce = 16;
constexpr std::uint32_t kOutputsAtOnce = 16;

/// Line and column of each mosaic position in the sensor's cell.
struct Phase {
  std::uint32_t line;
  std::uint32_t column;
};
constexpr std::array<Phase, 4> kPhases = {{{0, 1}, {0, 0}, {1, 1}, {1, 0}}};

/// Weights of the grid lines at the positions 0, 0.75, 1.5 and 2.25, in quarters.
constexpr std::int32_t kWeights[4][4] = {{4, 0, 0, 0}, {1, 3, 0, 0}, {0, 2, 2, 0}, {0, 0, 3, 1}};

/// What the four positions share.
struct Sizes {
  std::uint32_t width;       // of the plane
  std::uint32_t cells;       // grid cells along a line: six columns each
  std::uint32_t groups;      // of six plane lines
  std::uint32_t rowSamples;  // of the temporary file
  std::uint32_t rows;

  explicit Sizes(const ImageGeometry& g)
      : width(g.sensorWidth),
        cells(g.sensorWidth / kGroupLines),
        groups(g.sensorHeight / kGroupLines),
        rowSamples(2 * cells),
        rows(2 * groups) {}
  /// A grid line, split into every third sample: `cells` + 1 for each third.
  std::uint32_t thirdSamples() const { return cells + 1; }
  std::uint32_t gridSamples() const { return 3 * thirdSamples(); }
};

/// The reduction of one mosaic position.
class PositionPass {
 public:
  explicit PositionPass(const PlaneLines& lines) : lines_(lines) {}

  [[nodiscard]] Result Begin(const Sizes& sizes, Phase phase) {
    phase_ = phase;
    // The four lines of a group, a line of zeros for what lies before the plane, and one to split.
    grid_ = BlockOf<std::uint16_t>::Zeroed(6ull * sizes.gridSamples());
    sums_ = BlockOf<std::int32_t>::Zeroed(4ull * sizes.gridSamples());
    rows_ = BlockOf<std::uint16_t>::Uninitialised(2ull * kGroupsAtOnce * sizes.rowSamples);
    if (!grid_ || !sums_ || !rows_) return DEIMG_OUT_OF_MEMORY;
    const bool made = FileStream::MakeTemporary(file_) == DEIMG_OK &&
                      Open(*file_.get(), DEIMG_OPEN_TRUNCATE) == DEIMG_OK;
    return made ? DEIMG_OK : DEIMG_NO_WORK_FILE;
  }

  /// Shrinks `groups` groups whose plane lines start at `lines`; `available` lines are there.
  [[nodiscard]] Result Shrink(const Sizes& sizes, const std::uint16_t* lines,
                              std::uint32_t available, std::uint32_t groups) {
    for (std::uint32_t k = 0; k < groups; ++k) {
      std::array<const std::uint16_t*, 4> grid;
      for (std::uint32_t i = 0; i < 4; ++i) {
        const std::uint32_t line = k * kGroupLines + phase_.line + 2 * i;
        std::uint16_t* const samples = grid_.get() + std::size_t{i} * sizes.gridSamples();
        grid[i] = samples;
        if (line < available) {
          PickPosition(sizes, lines + std::size_t{line} * sizes.width, samples);
        } else {
          // Below the plane stands the last line of the group before, the first of this one.
          grid[i] = started_ ? grid[0] : grid_.get() + 4ull * sizes.gridSamples();
        }
      }
      ShrinkGroup(sizes, grid, rows_.get() + 2ull * k * sizes.rowSamples);
      started_ = true;
    }
    return Write(*file_.get(), rows_.get(), 2 * 2 * groups * sizes.rowSamples);
  }

  /// Halves the rows in the temporary file into a plane of `stride` samples a line.
  [[nodiscard]] Result Finish(const Sizes& sizes, std::uint32_t stride, std::uint16_t* plane) {
    if (sizes.cells < 2) return DEIMG_OK;
    const auto block =
        BlockOf<std::uint16_t>::Uninitialised((2ull * kOutputsAtOnce + 2) * sizes.rowSamples);
    if (!block) return DEIMG_OUT_OF_MEMORY;
    const auto row = [&](std::uint32_t i) {
      return block.get() + std::size_t{i} * sizes.rowSamples;
    };
    const std::uint32_t count = sizes.cells - 1;

    DEIMG_RETURN_IF_FAILED(ReadRows(sizes, 0, 2, block.get()));
    for (std::uint32_t m = 0; m < count; ++m) {
      const std::uint32_t x = 2 * m;
      plane[m] =
          static_cast<std::uint16_t>((row(0)[x] + row(0)[x + 1] + row(1)[x] + row(1)[x + 1]) >> 2);
    }
    for (std::uint32_t n = 1; n + 1 < sizes.groups; n += kOutputsAtOnce) {
      const std::uint32_t outputs = std::min(kOutputsAtOnce, sizes.groups - 1 - n);
      DEIMG_RETURN_IF_FAILED(ReadRows(sizes, 2 * n - 1, 2 * outputs + 2, block.get()));
      for (std::uint32_t i = 0; i < outputs; ++i) {
        lines_.halveRow(row(2 * i), row(2 * i + 1), row(2 * i + 2), row(2 * i + 3),
                        static_cast<int>(count), plane + std::size_t{n + i} * stride);
      }
    }
    return DEIMG_OK;
  }

  /// Closes and deletes the temporary file.
  void End() { file_.Release(); }

 private:
  /// The samples of this position on a plane line; the last one stands for those beyond the end.
  void PickPosition(const Sizes& sizes, const std::uint16_t* line, std::uint16_t* samples) const {
    const std::array<std::uint16_t*, 3> thirds = {samples, samples + sizes.thirdSamples(),
                                                  samples + 2ull * sizes.thirdSamples()};
    const std::uint32_t whole = sizes.cells - 1;  // cells whose samples are all there
    lines_.splitPosition(line + phase_.column, static_cast<int>(whole),
                         grid_.get() + 5ull * sizes.gridSamples(), thirds[0], thirds[1], thirds[2]);
    const std::uint32_t there = (sizes.width - phase_.column + 1) / 2;
    for (std::uint32_t i = 3 * whole; i <= 3 * sizes.cells; ++i) {
      thirds[i % 3][i / 3] = line[phase_.column + 2 * std::min(i, there - 1)];
    }
  }

  /// Two thirds of a group in each direction: two rows.
  void ShrinkGroup(const Sizes& sizes, const std::array<const std::uint16_t*, 4>& grid,
                   std::uint16_t* rows) const {
    std::array<ShrinkLines, 4> sums;
    for (std::size_t i = 0; i < 4; ++i) {
      std::int32_t* const line = sums_.get() + i * sizes.gridSamples();
      lines_.weightGrid(grid[0], grid[1], grid[2], grid[3], kWeights[i],
                        static_cast<int>(sizes.gridSamples()), line);
      sums[i] = {{line, line + sizes.thirdSamples(), line + 2ull * sizes.thirdSamples()}};
    }
    const int cells = static_cast<int>(sizes.cells);
    lines_.shrinkRow(sums[0], sums[1], cells, rows);
    lines_.shrinkRow(sums[2], sums[3], cells, rows + sizes.rowSamples);
  }

  [[nodiscard]] Result ReadRows(const Sizes& sizes, std::uint32_t first, std::uint32_t count,
                                std::uint16_t* block) {
    const std::uint32_t rowBytes = 2 * sizes.rowSamples;
    std::uint32_t delivered = 0;
    const bool read = SeekTo(*file_.get(), first * rowBytes) == DEIMG_OK &&
                      Read(*file_.get(), block, count * rowBytes, delivered) == DEIMG_OK &&
                      delivered == count * rowBytes;
    return read ? DEIMG_OK : DEIMG_NO_WORK_FILE;
  }

  const PlaneLines& lines_;
  Phase phase_{};
  bool started_ = false;
  BlockOf<std::uint16_t> grid_;
  BlockOf<std::int32_t> sums_;
  BlockOf<std::uint16_t> rows_;
  FileStream file_;
};

/// Reads the plane from top to bottom and has every position shrink it.
Result ShrinkPlane(CallerStream& plane, const Sizes& sizes, std::uint32_t height,
                   std::array<PositionPass, 4>& passes) {
  constexpr std::uint32_t kLinesAtOnce = kGroupsAtOnce * kGroupLines;
  const std::uint32_t lineBytes = 2 * sizes.width;
  const auto lines =
      BlockOf<std::uint16_t>::Zeroed(std::uint64_t{kLinesAtOnce + kOverlapLines} * sizes.width);
  if (!lines) return DEIMG_OUT_OF_MEMORY;
  std::uint32_t have = 0;  // lines at the start of the block, left from the groups before
  for (std::uint32_t group = 0; group < sizes.groups; group += kGroupsAtOnce) {
    const std::uint32_t groups = std::min(kGroupsAtOnce, sizes.groups - group);
    const std::uint32_t next = group * kGroupLines + have;
    const std::uint32_t wanted =
        std::min(groups * kGroupLines + kOverlapLines - have, height - next);
    std::uint16_t* const fresh = lines.get() + std::size_t{have} * sizes.width;
    // Error words of these two are not looked at; what is missing keeps the block's contents.
    std::uint32_t delivered = 0;
    (void)SeekTo(plane, next * lineBytes);
    (void)Read(plane, fresh, wanted * lineBytes, delivered);
    ToLittleEndian(fresh, std::size_t{wanted} * sizes.width);  // and back, which is the same
    for (PositionPass& pass : passes) {
      DEIMG_RETURN_IF_FAILED(pass.Shrink(sizes, lines.get(), have + wanted, groups));
    }
    const std::uint32_t used = groups * kGroupLines;
    have = have + wanted - std::min(used, have + wanted);
    std::copy_n(lines.get() + std::size_t{used} * sizes.width, std::size_t{have} * sizes.width,
                lines.get());
  }
  return DEIMG_OK;
}

/// Puts the average of every 2 x 2 samples of each position where the position lies in the cell.
void Fold(const ReducedGeometry& reduced, std::uint16_t* planes) {
  const std::size_t width = reduced.sensorWidth;
  const std::size_t planeSamples = width * reduced.sensorHeight;
  for (std::size_t y = 0; y < reduced.sensorHeight; y += 2) {
    for (std::size_t x = 0; x < width; x += 2) {
      const auto average = [&](std::size_t position) {
        const std::uint16_t* const p = planes + position * planeSamples + y * width + x;
        return static_cast<std::uint16_t>((p[0] + p[1] + p[width] + p[width + 1]) >> 2);
      };
      std::array<std::uint16_t, 4> cell{};
      for (std::size_t position = 0; position < 4; ++position) cell[position] = average(position);
      for (std::size_t position = 0; position < 4; ++position) {
        const Phase phase = kPhases[position];
        planes[(y + phase.line) * width + x + phase.column] = cell[position];
      }
    }
  }
  ToLittleEndian(planes, planeSamples);
}

}  // namespace

Result PreviewReduction(const PlaneLines& lines, CallerStream& plane, const ImageGeometry& geometry,
                        const ReducedGeometry& reduced, std::uint16_t* planes) {
  const Sizes sizes(geometry);
  std::array<PositionPass, 4> passes = {PositionPass(lines), PositionPass(lines),
                                        PositionPass(lines), PositionPass(lines)};
  for (std::size_t p = 0; p < passes.size(); ++p) {
    DEIMG_RETURN_IF_FAILED(passes[p].Begin(sizes, kPhases[p]));
  }
  DEIMG_RETURN_IF_FAILED(Open(plane, DEIMG_OPEN_READ));
  const Result shrunk = ShrinkPlane(plane, sizes, geometry.sensorHeight, passes);
  (void)Close(plane);
  DEIMG_RETURN_IF_FAILED(shrunk);
  const std::size_t planeSamples = std::size_t{reduced.sensorWidth} * reduced.sensorHeight;
  for (std::size_t p = 0; p < passes.size(); ++p) {
    DEIMG_RETURN_IF_FAILED(passes[p].Finish(sizes, reduced.sensorWidth, planes + p * planeSamples));
    passes[p].End();
  }
  Fold(reduced, planes);
  return DEIMG_OK;
}

}  // namespace deimg

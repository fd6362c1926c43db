#include "decode/position_pass.h"

#include <algorithm>

#include "storage/stream_calls.h"

namespace deimg {
namespace {

/// Weights of the grid lines at the positions 0, 0.75, 1.5 and 2.25, in quarters.
constexpr std::int32_t kWeights[4][4] = {{4, 0, 0, 0}, {1, 3, 0, 0}, {0, 2, 2, 0}, {0, 0, 3, 1}};

}  // namespace

bool PositionPass::Allocate(const ReductionSizes& sizes, std::uint32_t groupsAtOnce) {
  // The four lines of a group, and one to split.
  grid_ = BlockOf<std::uint16_t>::Zeroed(5ull * sizes.gridSamples());
  sums_ = BlockOf<std::int32_t>::Zeroed(4ull * sizes.gridSamples());
  rows_ = BlockOf<std::uint16_t>::Uninitialised(2ull * groupsAtOnce * sizes.rowSamples);
  return grid_ && sums_ && rows_;
}

Result PositionPass::OpenFile() {
  const bool made = FileStream::MakeTemporary(file_) == DEIMG_OK &&
                    Open(*file_.get(), DEIMG_OPEN_TRUNCATE) == DEIMG_OK;
  return made ? DEIMG_OK : DEIMG_NO_WORK_FILE;
}

Result PositionPass::Shrink(const ReductionSizes& sizes, const std::uint16_t* lines,
                            std::uint32_t available, std::uint32_t groups) {
  for (std::uint32_t k = 0; k < groups; ++k) {
    std::array<const std::uint16_t*, 4> grid;
    for (std::uint32_t i = 0; i < 4; ++i) {
      const std::uint32_t line = k * ReductionSizes::kGroupLines + phase_.line + 2 * i;
      std::uint16_t* const samples = grid_.get() + std::size_t{i} * sizes.gridSamples();
      grid[i] = samples;
      if (line < available) {
        PickPosition(sizes, lines + std::size_t{line} * sizes.width, samples);
      } else {
        // Below the plane stands the last line of the group before, the first of this one.
        grid[i] = grid[0];
      }
    }
    ShrinkGroup(sizes, grid, rows_.get() + 2ull * k * sizes.rowSamples);
  }
  return Write(*file_.get(), rows_.get(), 2 * 2 * groups * sizes.rowSamples);
}

Result PositionPass::Finish(const ReductionSizes& sizes, std::uint32_t atOnce, std::uint32_t stride,
                            std::uint16_t* plane) {
  const auto block = BlockOf<std::uint16_t>::Uninitialised((2ull * atOnce + 2) * sizes.rowSamples);
  if (!block) return DEIMG_OUT_OF_MEMORY;
  const auto row = [&](std::uint32_t i) { return block.get() + std::size_t{i} * sizes.rowSamples; };
  const std::uint32_t count = sizes.cells - 1;

  DEIMG_RETURN_IF_FAILED(ReadRows(sizes, 0, 2, block.get()));
  for (std::uint32_t m = 0; m < count; ++m) {
    const std::uint32_t x = 2 * m;
    plane[m] =
        static_cast<std::uint16_t>((row(0)[x] + row(0)[x + 1] + row(1)[x] + row(1)[x + 1]) >> 2);
  }
  for (std::uint32_t n = 1; n + 1 < sizes.groups; n += atOnce) {
    const std::uint32_t outputs = std::min(atOnce, sizes.groups - 1 - n);
    DEIMG_RETURN_IF_FAILED(ReadRows(sizes, 2 * n - 1, 2 * outputs + 2, block.get()));
    for (std::uint32_t i = 0; i < outputs; ++i) {
      lines_.halveRow(row(2 * i), row(2 * i + 1), row(2 * i + 2), row(2 * i + 3),
                      static_cast<int>(count), plane + std::size_t{n + i} * stride);
    }
  }
  file_.Release();
  return DEIMG_OK;
}

/// The samples of this position on a plane line; the last one stands for those beyond the end.
void PositionPass::PickPosition(const ReductionSizes& sizes, const std::uint16_t* line,
                                std::uint16_t* samples) const {
  const std::array<std::uint16_t*, 3> thirds = {samples, samples + sizes.thirdSamples(),
                                                samples + 2ull * sizes.thirdSamples()};
  const std::uint32_t whole = sizes.cells - 1;  // cells whose samples are all there
  lines_.splitPosition(line + phase_.column, static_cast<int>(whole),
                       grid_.get() + 4ull * sizes.gridSamples(), thirds[0], thirds[1], thirds[2]);
  const std::uint32_t there = (sizes.width - phase_.column + 1) / 2;
  for (std::uint32_t i = 3 * whole; i <= 3 * sizes.cells; ++i) {
    thirds[i % 3][i / 3] = line[phase_.column + 2 * std::min(i, there - 1)];
  }
}

/// Two thirds of a group in each direction: two rows.
void PositionPass::ShrinkGroup(const ReductionSizes& sizes,
                               const std::array<const std::uint16_t*, 4>& grid,
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

Result PositionPass::ReadRows(const ReductionSizes& sizes, std::uint32_t first, std::uint32_t count,
                              std::uint16_t* block) {
  const std::uint32_t rowBytes = 2 * sizes.rowSamples;
  std::uint32_t delivered = 0;
  const bool read = SeekTo(*file_.get(), first * rowBytes) == DEIMG_OK &&
                    Read(*file_.get(), block, count * rowBytes, delivered) == DEIMG_OK &&
                    delivered == count * rowBytes;
  return read ? DEIMG_OK : DEIMG_NO_WORK_FILE;
}

}  // namespace deimg

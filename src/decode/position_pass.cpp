#include "decode/position_pass.h"

#include <algorithm>
#include <utility>

#include "storage/stream_calls.h"

namespace deimg {

bool PositionPass::Allocate(const ReductionSizes& sizes, std::uint32_t groupsAtOnce) {
  // The four lines of a group, and one to split.
  samples_ = BlockOf<std::uint16_t>::Zeroed(5ull * sizes.gridSamples());
  sums_ = BlockOf<std::int32_t>::Zeroed(4ull * sizes.gridSamples());
  rows_ =
      BlockOf<std::uint16_t>::Uninitialised((2ull * groupsAtOnce + kKeptRows) * sizes.rowSamples);
  for (std::size_t i = 0; i < grid_.size() && samples_; ++i) {
    grid_[i] = samples_.get() + i * sizes.gridSamples();
  }
  return samples_ && sums_ && rows_;
}

Result PositionPass::OpenFile() {
  const bool made = FileStream::MakeTemporary(file_) == DEIMG_OK &&
                    Open(*file_.get(), DEIMG_OPEN_TRUNCATE) == DEIMG_OK;
  return made ? DEIMG_OK : DEIMG_NO_WORK_FILE;
}

void PositionPass::ShrinkGroup(const ReductionSizes& sizes, const std::uint16_t* lines,
                               std::uint32_t available) {
  const bool isFirst = shrunk_ == 0 && fresh_ == 0;
  // A group's last line is the next one's first.
  std::swap(grid_[0], grid_[3]);
  std::array<const std::uint16_t*, 4> grid{};
  for (std::uint32_t i = 0; i < 4; ++i) {
    const std::uint32_t line = phase_.line + 2 * i;
    // Below the plane stands the last line of the group before, the first of this one.
    grid[i] = line < available ? grid_[i] : grid_[0];
    const bool known = line >= available || (i == 0 && !isFirst);
    if (!known) PickPosition(sizes, lines + std::size_t{line} * sizes.width, grid_[i]);
  }
  const auto sumsAt = [&](std::size_t i) { return sums_.get() + i * sizes.gridSamples(); };
  lines_.weightGrid(grid[0], grid[1], grid[2], grid[3], static_cast<int>(sizes.gridSamples()),
                    sumsAt(0), sumsAt(1), sumsAt(2), sumsAt(3));
  const auto thirdsAt = [&](std::size_t i) -> ShrinkLines {
    const std::int32_t* const line = sumsAt(i);
    return {{line, line + sizes.thirdSamples(), line + 2ull * sizes.thirdSamples(), line + 1}};
  };
  const int cells = static_cast<int>(sizes.cells);
  std::uint16_t* const rows = rows_.get() + (2ull * fresh_++ + kKeptRows) * sizes.rowSamples;
  lines_.shrinkRow(thirdsAt(0), thirdsAt(1), cells, rows);
  lines_.shrinkRow(thirdsAt(2), thirdsAt(3), cells, rows + sizes.rowSamples);
}

/// The samples of this position on a plane line; the last one stands for those beyond the end.
void PositionPass::PickPosition(const ReductionSizes& sizes, const std::uint16_t* line,
                                std::uint16_t* samples) const {
  const std::array<std::uint16_t*, 3> thirds = {samples, samples + sizes.thirdSamples(),
                                                samples + 2ull * sizes.thirdSamples()};
  const std::uint32_t whole = sizes.cells - 1;  // cells whose samples are all there
  lines_.splitPosition(line + phase_.column, static_cast<int>(whole),
                       samples_.get() + 4ull * sizes.gridSamples(), thirds[0], thirds[1],
                       thirds[2]);
  const std::uint32_t there = (sizes.width - phase_.column + 1) / 2;
  for (std::uint32_t i = 3 * whole; i <= 3 * sizes.cells; ++i) {
    thirds[i % 3][i / 3] = line[phase_.column + 2 * std::min(i, there - 1)];
  }
}

Result PositionPass::HalveGroups(const ReductionSizes& sizes) {
  const std::uint32_t groupBytes = 2 * 2 * sizes.rowSamples;
  std::uint16_t* const rows = rows_.get() + std::size_t{kKeptRows} * sizes.rowSamples;
  DEIMG_RETURN_IF_FAILED(Write(*file_.get(), rows, fresh_ * groupBytes));
  std::uint32_t delivered = 0;
  const bool read = SeekTo(*file_.get(), shrunk_ * groupBytes) == DEIMG_OK &&
                    Read(*file_.get(), rows, fresh_ * groupBytes, delivered) == DEIMG_OK &&
                    delivered == fresh_ * groupBytes;
  if (!read) return DEIMG_NO_WORK_FILE;
  HalveRows(sizes);
  shrunk_ += fresh_;
  fresh_ = 0;
  return DEIMG_OK;
}

/// All lines of the result whose four rows are there; the first one has two.
void PositionPass::HalveRows(const ReductionSizes& sizes) {
  const auto row = [&](std::uint32_t i) { return rows_.get() + std::size_t{i} * sizes.rowSamples; };
  const std::uint32_t count = sizes.cells - 1;
  if (shrunk_ == 0) {
    const std::uint16_t* const top = row(kKeptRows);
    const std::uint16_t* const bottom = row(kKeptRows + 1);
    for (std::uint32_t m = 0; m < count; ++m) {
      const std::uint32_t x = 2 * m;
      result_[m] =
          static_cast<std::uint16_t>((top[x] + top[x + 1] + bottom[x] + bottom[x + 1]) >> 2);
    }
  }
  // Line n needs the rows 2n - 1 to 2n + 2.
  for (std::uint32_t i = shrunk_ < 2 ? 2 - shrunk_ : 0; i < fresh_; ++i) {
    lines_.halveRow(row(2 * i), row(2 * i + 1), row(2 * i + 2), row(2 * i + 3),
                    static_cast<int>(count), result_ + std::size_t{shrunk_ + i - 1} * stride_);
  }
  std::copy_n(row(2 * fresh_), std::size_t{kKeptRows} * sizes.rowSamples, row(0));
}

}  // namespace deimg

#include "decode/preview_reduction.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include "base/byte_order.h"
#include "decode/position_pass.h"
#include "storage/mem_block.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

/// Line and column of each mosaic position in the sensor's cell.
constexpr std::array<Phase, 4> kPhases = {{{0, 1}, {0, 0}, {1, 1}, {1, 0}}};

/// How much is worked on side by side. All four positions together need the plane's lines once;
/// where memory or the disk do not suffice for that, one position after the other does.
struct Share {
  std::size_t positions;
  std::uint32_t groups;  // also lines of the result
};
constexpr Share kTogether = {4, 16};
constexpr Share kOneByOne = {1, 1};

/// Lines of the plane from top to bottom: where they are in memory, or read into a block.
class LineReader {
 public:
  LineReader(const SensorPlane& plane, const ImageGeometry& geometry)
      : plane_(plane), width_(geometry.sensorWidth), height_(geometry.sensorHeight) {}

  /// For so many lines at a time: false when memory is short.
  [[nodiscard]] bool Allocate(std::uint32_t lines) {
    if (isInPlace()) return true;
    block_ = BlockOf<std::uint16_t>::Uninitialised(std::uint64_t{lines} * width_);
    return static_cast<bool>(block_);
  }

  /// Hands out `count` lines from `first` on, less where the plane ends. Those that the call before
  /// handed out too are not read again.
  [[nodiscard]] Result Lines(std::uint32_t first, std::uint32_t& count,
                             const std::uint16_t*& lines) {
    count = std::min(count, height_ - first);
    if (isInPlace()) {
      lines = plane_.samples + std::size_t{first} * width_;
      return DEIMG_OK;
    }
    const std::uint32_t have = end_ - first;
    std::copy_n(block_.get() + std::size_t{first - first_} * width_, std::size_t{have} * width_,
                block_.get());
    std::uint16_t* const fresh = block_.get() + std::size_t{have} * width_;
    const std::uint32_t bytes = 2 * (count - have) * width_;
    std::uint32_t delivered = 0;
    (void)SeekTo(plane_.stream, 2 * end_ * width_);
    (void)Read(plane_.stream, fresh, bytes, delivered);
    // These lines are there: without them there is no picture.
    if (delivered < bytes) return DEIMG_FILE_READ;
    ToLittleEndian(fresh, bytes / 2);  // and back, which is the same
    first_ = first;
    end_ = first + count;
    lines = block_.get();
    return DEIMG_OK;
  }

 private:
  bool isInPlace() const {
    return plane_.samples != nullptr && std::endian::native == std::endian::little;
  }

  const SensorPlane& plane_;
  const std::uint32_t width_;
  const std::uint32_t height_;
  BlockOf<std::uint16_t> block_;
  std::uint32_t first_ = 0;  // lines in the block
  std::uint32_t end_ = 0;
};

/// Reduces some of the positions side by side, each into its plane.
Result ReducePositions(std::span<PositionPass> passes, const Share& share, const SensorPlane& plane,
                       const ImageGeometry& geometry) {
  const ReductionSizes sizes(geometry);
  LineReader reader(plane, geometry);
  const auto linesOf = [](std::uint32_t groups) {
    return groups * ReductionSizes::kGroupLines + ReductionSizes::kOverlapLines;
  };
  if (!reader.Allocate(linesOf(share.groups))) return DEIMG_OUT_OF_MEMORY;
  for (PositionPass& pass : passes) {
    if (!pass.Allocate(sizes, share.groups)) return DEIMG_OUT_OF_MEMORY;
  }
  DEIMG_RETURN_IF_FAILED(Open(plane.stream, DEIMG_OPEN_READ));
  const ClosedOnExit closePlane(plane.stream);
  for (PositionPass& pass : passes) DEIMG_RETURN_IF_FAILED(pass.OpenFile());
  for (std::uint32_t group = 0; group < sizes.groups; group += share.groups) {
    const std::uint32_t groups = std::min(share.groups, sizes.groups - group);
    const std::uint16_t* lines = nullptr;
    std::uint32_t available = linesOf(groups);
    DEIMG_RETURN_IF_FAILED(reader.Lines(group * ReductionSizes::kGroupLines, available, lines));
    for (std::uint32_t k = 0; k < groups; ++k) {
      const std::uint32_t top = k * ReductionSizes::kGroupLines;
      for (PositionPass& pass : passes) {
        pass.ShrinkGroup(sizes, lines + std::size_t{top} * sizes.width, available - top);
      }
    }
    for (PositionPass& pass : passes) DEIMG_RETURN_IF_FAILED(pass.HalveGroups(sizes));
  }
  return DEIMG_OK;
}

/// Reduces all positions in shares of the same size.
Result ReduceAll(const PlaneLines& lines, const Share& share, const SensorPlane& plane,
                 const ImageGeometry& geometry, const ReducedGeometry& reduced,
                 std::uint16_t* planes) {
  const std::size_t planeSamples = std::size_t{reduced.sensorWidth} * reduced.sensorHeight;
  for (std::size_t first = 0; first < kPhases.size(); first += share.positions) {
    const auto pass = [&](std::size_t i) {
      const std::size_t position = (first + i) % kPhases.size();
      return PositionPass(lines, kPhases[position], planes + position * planeSamples,
                          reduced.sensorWidth);
    };
    std::array<PositionPass, 4> passes = {pass(0), pass(1), pass(2), pass(3)};
    DEIMG_RETURN_IF_FAILED(
        ReducePositions(std::span(passes).first(share.positions), share, plane, geometry));
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

Result PreviewReduction(const PlaneLines& lines, const SensorPlane& plane,
                        const ImageGeometry& geometry, const ReducedGeometry& reduced,
                        std::uint16_t* planes) {
  Result result = ReduceAll(lines, kTogether, plane, geometry, reduced, planes);
  const bool tooMuch =
      result == DEIMG_OUT_OF_MEMORY || result == DEIMG_NO_WORK_FILE || result == DEIMG_FILE_WRITE;
  if (tooMuch) result = ReduceAll(lines, kOneByOne, plane, geometry, reduced, planes);
  if (result == DEIMG_OK) Fold(reduced, planes);
  return result;
}

}  // namespace deimg

#include "decode/preview_reduction.h"

#include <algorithm>
#include <array>
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

/// Reads the plane from top to bottom and has every position shrink it. `block` holds the lines of
/// `groupsAtOnce` groups and the overlap.
Result ShrinkPlane(CallerStream& plane, const ReductionSizes& sizes, std::uint32_t height,
                   std::uint32_t groupsAtOnce, std::uint16_t* block,
                   std::span<PositionPass> passes) {
  const std::uint32_t lineBytes = 2 * sizes.width;
  std::uint32_t have = 0;  // lines at the start of the block, left from the groups before
  for (std::uint32_t group = 0; group < sizes.groups; group += groupsAtOnce) {
    const std::uint32_t groups = std::min(groupsAtOnce, sizes.groups - group);
    const std::uint32_t next = group * ReductionSizes::kGroupLines + have;
    const std::uint32_t wanted = std::min(
        groups * ReductionSizes::kGroupLines + ReductionSizes::kOverlapLines - have, height - next);
    std::uint16_t* const fresh = block + std::size_t{have} * sizes.width;
    std::uint32_t delivered = 0;
    (void)SeekTo(plane, next * lineBytes);
    (void)Read(plane, fresh, wanted * lineBytes, delivered);
    // These lines are there: without them there is no picture.
    if (delivered < wanted * lineBytes) return DEIMG_FILE_READ;
    ToLittleEndian(fresh, std::size_t{wanted} * sizes.width);  // and back, which is the same
    for (PositionPass& pass : passes) {
      DEIMG_RETURN_IF_FAILED(pass.Shrink(sizes, block, have + wanted, groups));
    }
    const std::uint32_t used = groups * ReductionSizes::kGroupLines;
    have = have + wanted - std::min(used, have + wanted);
    std::copy_n(block + std::size_t{used} * sizes.width, std::size_t{have} * sizes.width, block);
  }
  return DEIMG_OK;
}

/// Reduces some of the positions side by side, each into its plane.
Result ReducePositions(std::span<PositionPass> passes, const Share& share, CallerStream& plane,
                       const ImageGeometry& geometry, const ReducedGeometry& reduced,
                       std::uint16_t* planes) {
  const ReductionSizes sizes(geometry);
  const auto block = BlockOf<std::uint16_t>::Uninitialised(
      (std::uint64_t{share.groups} * ReductionSizes::kGroupLines + ReductionSizes::kOverlapLines) *
      sizes.width);
  if (!block) return DEIMG_OUT_OF_MEMORY;
  for (PositionPass& pass : passes) {
    if (!pass.Allocate(sizes, share.groups)) return DEIMG_OUT_OF_MEMORY;
  }
  DEIMG_RETURN_IF_FAILED(Open(plane, DEIMG_OPEN_READ));
  Result result = DEIMG_OK;
  for (PositionPass& pass : passes) {
    if (result == DEIMG_OK) result = pass.OpenFile();
  }
  if (result == DEIMG_OK) {
    result = ShrinkPlane(plane, sizes, geometry.sensorHeight, share.groups, block.get(), passes);
  }
  (void)Close(plane);
  for (PositionPass& pass : passes) {
    DEIMG_RETURN_IF_FAILED(result);
    result = pass.Finish(sizes, share.groups, reduced.sensorWidth, planes);
    planes += std::size_t{reduced.sensorWidth} * reduced.sensorHeight;
  }
  return result;
}

/// Reduces all positions in shares of the same size.
Result ReduceAll(const PlaneLines& lines, const Share& share, CallerStream& plane,
                 const ImageGeometry& geometry, const ReducedGeometry& reduced,
                 std::uint16_t* planes) {
  const std::size_t planeSamples = std::size_t{reduced.sensorWidth} * reduced.sensorHeight;
  for (std::size_t first = 0; first < kPhases.size(); first += share.positions) {
    std::array<PositionPass, 4> passes = {PositionPass(lines, kPhases[first]),
                                          PositionPass(lines, kPhases[(first + 1) % 4]),
                                          PositionPass(lines, kPhases[(first + 2) % 4]),
                                          PositionPass(lines, kPhases[(first + 3) % 4])};
    DEIMG_RETURN_IF_FAILED(ReducePositions(std::span(passes).first(share.positions), share, plane,
                                           geometry, reduced, planes + first * planeSamples));
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
  Result result = ReduceAll(lines, kTogether, plane, geometry, reduced, planes);
  const bool tooMuch =
      result == DEIMG_OUT_OF_MEMORY || result == DEIMG_NO_WORK_FILE || result == DEIMG_FILE_WRITE;
  if (tooMuch) result = ReduceAll(lines, kOneByOne, plane, geometry, reduced, planes);
  if (result == DEIMG_OK) Fold(reduced, planes);
  return result;
}

}  // namespace deimg

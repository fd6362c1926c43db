#include "decode/point_white_balance.h"

#include <algorithm>

#include "base/byte_order.h"
#include "storage/mem_block.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr std::uint32_t kSquare = 20;
constexpr std::int32_t kNeutralGain = 832;
constexpr std::uint32_t kHighestRedGain = 4870;

}  // namespace

std::array<std::uint32_t, 4> GainsFromSums(const SiteSums& sums) {
  std::array<std::int32_t, 4> average{};
  for (std::size_t i = 0; i < 4; ++i) {
    const std::int32_t count = sums.count[i];
    average[i] = count == 0 ? 1 : std::max((sums.sum[i] + count / 2) / count, 1);
  }
  const std::int32_t k = (average[1] + average[2]) * kNeutralGain;
  std::array<std::uint32_t, 4> gains{};
  for (std::size_t i = 0; i < 4; ++i) gains[i] = static_cast<std::uint32_t>(k / (2 * average[i]));
  gains[0] = std::min(gains[0], kHighestRedGain);
  return gains;
}

Result PointWhiteBalance(CallerStream& plane, const ImageGeometry& geometry,
                         DevelopParams& params) {
  const std::uint32_t width = geometry.sensorWidth;
  const std::uint32_t lineBytes = 2 * width;
  const auto square = BlockOf<std::uint8_t>::Zeroed(std::uint64_t{kSquare} * lineBytes);
  if (!square) return DEIMG_OUT_OF_MEMORY;
  const std::uint32_t x0 = static_cast<std::uint32_t>(params.wbPointX) + geometry.areaLeft;
  const std::uint32_t y0 = static_cast<std::uint32_t>(params.wbPointY) + geometry.areaTop;
  std::uint32_t delivered = 0;
  DEIMG_RETURN_IF_FAILED(Open(plane, DEIMG_OPEN_READ));
  DEIMG_RETURN_IF_FAILED(SeekTo(plane, y0 * lineBytes));
  DEIMG_RETURN_IF_FAILED(Read(plane, square.get(), kSquare * lineBytes, delivered));
  DEIMG_RETURN_IF_FAILED(Close(plane));
  const std::uint32_t lines = std::min(kSquare, geometry.sensorHeight - y0);
  if (delivered < lines * lineBytes) return DEIMG_FILE_READ;

  SiteSums sums;
  const std::uint32_t lastColumn = std::min(x0 + kSquare, width);
  for (std::uint32_t r = 0; r < lines; ++r) {
    for (std::uint32_t c = x0; c < lastColumn; ++c) {
      const std::size_t site = 2 * ((y0 + r) % 2) + c % 2;
      sums.sum[site] += LoadU16(square.get() + r * lineBytes + 2 * c, false);
      ++sums.count[site];
    }
  }
  const auto gains = GainsFromSums(sums);
  for (std::size_t i = 0; i < 4; ++i) params.whiteBalance.wbGains[i] = gains[i];
  params.whiteBalance.wbGainsSet = 1;
  return DEIMG_OK;
}

}  // namespace deimg

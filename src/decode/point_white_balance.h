/// White-balance gains from a point of the picture.
#ifndef DEIMG_DECODE_POINT_WHITE_BALANCE_H
#define DEIMG_DECODE_POINT_WHITE_BALANCE_H

#include <array>
#include <cstdint>

#include "base/result.h"
#include "props/image_geometry.h"

namespace deimg {

/// Computes the gains that make the 20 x 20 square at (wbPointX, wbPointY) of the image area grey,
/// and stores them in the host's block with wbGainsSet = 1. The point lies inside the image area;
/// the square is cut to the plane.
///
/// @return DEIMG_OUT_OF_MEMORY, an error word of the stream, or 39 when it ends too early; the
/// block then keeps its contents.
[[nodiscard]] Result PointWhiteBalance(CallerStream& plane, const ImageGeometry& geometry,
                                       DevelopParams& params);

/// Sums and counts of the samples of each mosaic site: red, green of red lines, green of blue
/// lines, blue.
struct SiteSums {
  std::array<std::int32_t, 4> sum{};
  std::array<std::int32_t, 4> count{};
};

/// Gains from the sites' averages: a site as bright as the mean green gets 832, one half as bright
/// 1664. Red is limited to 4870; a site that is black or has no samples counts as 1.
[[nodiscard]] std::array<std::uint32_t, 4> GainsFromSums(const SiteSums& sums);

}  // namespace deimg

#endif  // DEIMG_DECODE_POINT_WHITE_BALANCE_H

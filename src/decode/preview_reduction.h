/// The sensor plane reduced to one sixth, for previews and thumbnails.
#ifndef DEIMG_DECODE_PREVIEW_REDUCTION_H
#define DEIMG_DECODE_PREVIEW_REDUCTION_H

#include <array>
#include <cstdint>

#include "api/result.h"
#include "decode/image_geometry.h"

namespace deimg {

/// Reduces the black-level-corrected plane to a mosaic of the reduced geometry.
///
/// Each of the four mosaic positions is resampled by itself: three grid steps of a position become
/// four values (bilinear), pairs of them one, and a 4 x 4 filter halves the result again; what lies
/// between goes through a temporary file per position. Then the four planes are folded into one
/// mosaic with the sensor's cell. Every line of the plane is read once.
///
/// @param planes  four planes of reduced width x height samples, zeroed; the first one receives the
///                mosaic in the sensor plane's byte order.
/// @return DEIMG_OUT_OF_MEMORY, DEIMG_NO_WORK_FILE or an error word of a stream. No temporary file
///         is left behind.
[[nodiscard]] Result PreviewReduction(CallerStream& plane, const ImageGeometry& geometry,
                                      const ImageGeometry& reduced, std::uint16_t* planes);

/// Grid lines of one mosaic position, two plane lines apart: 3 x cells + 1 samples each.
using GridLines = std::array<const std::uint16_t*, 4>;

/// Two thirds of a group of grid lines in each direction: every 4 x 4 grid gives 4 x 4 values at
/// the positions 0, 0.75, 1.5 and 2.25 of its steps, every 2 x 2 of those their average. Writes two
/// rows of 2 x `cells` values.
void ShrinkGroup(const GridLines& grid, std::uint32_t cells, std::uint16_t* row0,
                 std::uint16_t* row1);

/// Half of four rows, weights 1 3 3 1 in each direction: `count` values, two columns apart, the
/// first of them at column 0 from two columns only.
void HalveRows(const std::array<const std::uint16_t*, 4>& rows, std::uint32_t count,
               std::uint16_t* out);

}  // namespace deimg

#endif  // DEIMG_DECODE_PREVIEW_REDUCTION_H

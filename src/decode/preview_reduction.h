/// The sensor plane reduced to one sixth, for previews and thumbnails.
#ifndef DEIMG_DECODE_PREVIEW_REDUCTION_H
#define DEIMG_DECODE_PREVIEW_REDUCTION_H

#include <cstdint>

#include "base/result.h"
#include "decode/plane_lines.h"
#include "props/image_geometry.h"
#include "storage/sensor_plane.h"

namespace deimg {

/// Reduces the black-level-corrected plane to a mosaic of the reduced geometry.
///
/// Each of the four mosaic positions is resampled by itself: three grid steps of a position become
/// four values (bilinear), pairs of them one, and a 4 x 4 filter halves the result again; what lies
/// between goes through a temporary file per position. Then the four planes are folded into one
/// mosaic with the sensor's cell. Every line of the plane is read once;
/// a plane in memory is not copied.
///
/// @param planes  four planes of reduced width x height samples, zeroed; the first one receives the
///                mosaic in the sensor plane's byte order.
/// @return DEIMG_OUT_OF_MEMORY, DEIMG_NO_WORK_FILE or an error word of a stream. No temporary file
///         is left behind.
[[nodiscard]] Result PreviewReduction(const PlaneLines& lines, const SensorPlane& plane,
                                      const ImageGeometry& geometry, const ReducedGeometry& reduced,
                                      std::uint16_t* planes);

}  // namespace deimg

#endif  // DEIMG_DECODE_PREVIEW_REDUCTION_H

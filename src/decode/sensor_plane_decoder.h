/// From the raw file's compressed sensor data to the sensor plane.
#ifndef DEIMG_DECODE_SENSOR_PLANE_DECODER_H
#define DEIMG_DECODE_SENSOR_PLANE_DECODER_H

#include "base/result.h"
#include "decode/plane_lines.h"
#include "props/image_geometry.h"
#include "props/image_props.h"
#include "storage/sensor_plane.h"

namespace deimg {

/// Decodes the sensor data into the plane. Opens and closes both streams. A plane in memory has its
/// black levels subtracted too, line by line, and `listener` is told; one in a file is left as
/// decoded, and `listener` hears nothing.
///
/// A sample is a 10-bit value, predicted from the previous sample of the same column parity on its
/// line (512 at a line's start) plus a coded difference, with two low bits appended that the file
/// stores in a block of their own. Differences come in blocks of 64 samples. Samples after the last
/// whole block are 0. Values are not clipped: an impossible one is stored modulo 2^16.
///
/// @return 2 when the data do not fit the code or end too early, 3 out of memory, 32 when the plane
///         cannot be opened, 98 when a stream lacks an operation, or an error word of a stream.
[[nodiscard]] Result SensorPlaneDecoder(const PlaneLines& lines, CallerStream& input,
                                        const ImageGeometry& geometry, const ImageProps& props,
                                        const SensorPlane& plane,
                                        const LinesListener& listener = {});

}  // namespace deimg

#endif  // DEIMG_DECODE_SENSOR_PLANE_DECODER_H

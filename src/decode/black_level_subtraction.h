/// Removal of the sensor's black level.
#ifndef DEIMG_DECODE_BLACK_LEVEL_SUBTRACTION_H
#define DEIMG_DECODE_BLACK_LEVEL_SUBTRACTION_H

#include <cstdint>

#include "base/result.h"
#include "decode/plane_lines.h"
#include "props/image_geometry.h"

namespace deimg {

/// Subtracts the black levels from line `y` of a plane, in the machine's byte order.
void SubtractBlackLevels(const PlaneLines& lines, const std::uint16_t (&blackLevelWords)[4],
                         std::uint32_t y, std::uint32_t width, std::uint16_t* line);

/// Subtracts the black levels from a plane in a file, line by line; samples at or below theirs
/// become 0. The levels are those of the positions (even line, odd column), (even, even), (odd,
/// odd), (odd, even). Opens the stream with mode 2 and closes it; after a failure it stays open.
///
/// @return 0, DEIMG_OUT_OF_MEMORY, an error word of the stream, or 39 when it ends too early.
[[nodiscard]] Result BlackLevelSubtraction(const PlaneLines& lines, const ImageGeometry& geometry,
                                           CallerStream& plane,
                                           const std::uint16_t (&blackLevelWords)[4]);

}  // namespace deimg

#endif  // DEIMG_DECODE_BLACK_LEVEL_SUBTRACTION_H

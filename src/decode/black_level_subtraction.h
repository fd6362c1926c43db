/// Removal of the sensor's black level.
#ifndef DEIMG_DECODE_BLACK_LEVEL_SUBTRACTION_H
#define DEIMG_DECODE_BLACK_LEVEL_SUBTRACTION_H

#include <array>
#include <cstdint>

#include "api/result.h"
#include "decode/image_geometry.h"

namespace deimg {

/// Black levels by mosaic position: (even line, odd column), (even, even), (odd, odd), (odd, even).
using BlackLevels = std::array<std::int32_t, 4>;

/// Subtracts two levels that alternate along a line; samples at or below theirs become 0.
void SubtractLevelsLine(std::int32_t evenColumns, std::int32_t oddColumns, std::uint32_t width,
                        std::uint8_t* littleEndianSamples);

/// Subtracts the black levels from the plane, in place, line by line. Opens the stream with mode 2
/// and closes it; after a failure it stays open.
///
/// @return 0, DEIMG_OUT_OF_MEMORY or an error word of the stream.
[[nodiscard]] Result BlackLevelSubtraction(const ImageGeometry& geometry, CallerStream& plane,
                                           const std::uint16_t (&blackLevelWords)[4]);

}  // namespace deimg

#endif  // DEIMG_DECODE_BLACK_LEVEL_SUBTRACTION_H

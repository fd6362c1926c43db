/// Where the picture lies on the sensor.
#ifndef DEIMG_PROPS_IMAGE_GEOMETRY_H
#define DEIMG_PROPS_IMAGE_GEOMETRY_H

#include <cstdint>

#include "base/result.h"
#include "props/image_props.h"

namespace deimg {

/// Sensor size, image area, auxiliary rectangle and output rectangle, in sensor columns and lines.
struct ImageGeometry {
  std::uint8_t byteOrder[2];
  std::uint16_t sensorWidth;
  std::uint16_t sensorHeight;
  std::uint16_t areaLeft;
  std::uint16_t areaTop;
  std::uint16_t areaWidth;
  std::uint16_t areaHeight;
  std::uint16_t auxLeft;
  std::uint16_t auxTop;
  std::uint16_t auxWidth;
  std::uint16_t auxHeight;
  std::uint16_t areaHeightCopy;
  std::uint16_t outLeft;
  std::uint16_t outTop;
  std::uint16_t outWidth;
  std::uint16_t outHeight;
};
static_assert(sizeof(ImageGeometry) == 32);

/// The geometry of preview and thumbnail: another picture, one sixth of the sensor's.
using ReducedGeometry = ImageGeometry;

/// Derives the geometry from the sensor record, whose auxiliary top and bottom lines are rounded
/// down to even on the way.
[[nodiscard]] ImageGeometry DeriveGeometry(SensorRecord& sensor);

/// Every field divided by 6, rounded down to even.
[[nodiscard]] ReducedGeometry ReduceGeometry(const ImageGeometry& geometry);

/// Whether the library can develop a picture of this geometry: an even width of 6 columns or more,
/// 1 line or more, a plane of less than 2 GiB, and an image area inside the plane.
[[nodiscard]] bool IsSupported(const ImageGeometry& geometry);

/// Whether the reduced picture can be developed: its area has 2 x 2 pixels or more.
[[nodiscard]] bool IsSupportedReduced(const ReducedGeometry& reduced);

/// Bytes of the sensor plane.
[[nodiscard]] std::uint64_t PlaneBytes(const ImageGeometry& geometry);

}  // namespace deimg

#endif  // DEIMG_PROPS_IMAGE_GEOMETRY_H

#include "props/image_geometry.h"

namespace deimg {
namespace {

constexpr std::uint16_t kReduction = 6;
constexpr int kSmallestWidth = 6;
constexpr int kSmallestHeight = 1;

std::uint16_t Even(std::uint16_t value) { return value & 0xFFFEu; }

std::uint16_t Extent(std::uint16_t first, std::uint16_t last) {
  return static_cast<std::uint16_t>(last - first + 1);
}

}  // namespace

ImageGeometry DeriveGeometry(SensorRecord& sensor) {
  sensor.auxTop = Even(sensor.auxTop);
  sensor.auxBottom = Even(sensor.auxBottom);
  ImageGeometry g{};
  g.byteOrder[0] = g.byteOrder[1] = 'I';
  g.sensorWidth = sensor.width;
  g.sensorHeight = sensor.height;
  g.areaLeft = g.outLeft = sensor.areaLeft;
  g.areaTop = g.outTop = sensor.areaTop;
  g.areaWidth = g.outWidth = Extent(sensor.areaLeft, sensor.areaRight);
  g.areaHeight = g.areaHeightCopy = g.outHeight = Extent(sensor.areaTop, sensor.areaBottom);
  g.auxLeft = sensor.auxLeft;
  g.auxTop = sensor.auxTop;
  g.auxWidth = Extent(sensor.auxLeft, sensor.auxRight);
  g.auxHeight = Extent(sensor.auxTop, sensor.auxBottom);
  return g;
}

ReducedGeometry ReduceGeometry(const ImageGeometry& geometry) {
  const auto reduced = [](std::uint16_t value) {
    return Even(static_cast<std::uint16_t>(value / kReduction));
  };
  ImageGeometry r = geometry;
  for (std::uint16_t* field :
       {&r.sensorWidth, &r.sensorHeight, &r.areaLeft, &r.areaTop, &r.areaWidth, &r.areaHeight,
        &r.auxLeft, &r.auxTop, &r.auxWidth, &r.auxHeight, &r.areaHeightCopy, &r.outLeft, &r.outTop,
        &r.outWidth, &r.outHeight}) {
    *field = reduced(*field);
  }
  return r;
}

bool IsSupported(const ImageGeometry& g) {
  // A left column right of the right one shows as a width that leaves the plane or is 0.
  return g.sensorWidth % 2 == 0 && g.sensorWidth >= kSmallestWidth &&
         g.sensorHeight >= kSmallestHeight && PlaneBytes(g) <= INT32_MAX && g.areaWidth > 0 &&
         g.areaLeft + g.areaWidth <= g.sensorWidth && g.areaHeight > 0 &&
         g.areaTop + g.areaHeight <= g.sensorHeight;
}

bool IsSupportedReduced(const ReducedGeometry& r) {
  return IsSupported(r) && r.areaWidth >= 2 && r.areaHeight >= 2;
}

std::uint64_t PlaneBytes(const ImageGeometry& geometry) {
  return std::uint64_t{geometry.sensorWidth} * geometry.sensorHeight * 2;
}

}  // namespace deimg

/// Where the decoded sensor samples are.
#ifndef DEIMG_STORAGE_SENSOR_PLANE_H
#define DEIMG_STORAGE_SENSOR_PLANE_H

#include <cstdint>

#include <deimg/deimg.h>

namespace deimg {

/// sensorHeight lines of sensorWidth unsigned 16-bit little-endian samples, in a stream. `samples`
/// are those of a stream in memory, to be worked on without copies; null when it is a file.
struct SensorPlane {
  CallerStream& stream;
  std::uint16_t* samples = nullptr;
};

/// Is told how many lines from the plane's top nothing will change any more.
struct LinesListener {
  void (*linesReady)(void* self, int lines) = nullptr;  // null when nobody listens
  void* self = nullptr;
};

}  // namespace deimg

#endif  // DEIMG_STORAGE_SENSOR_PLANE_H

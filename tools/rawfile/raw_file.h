/// A whole raw file: header, sensor data, property heap.
#ifndef DEIMG_RAWFILE_RAW_FILE_H
#define DEIMG_RAWFILE_RAW_FILE_H

#include "rawfile/property_set.h"
#include "rawfile/sensor_encoder.h"

namespace deimg::rawfile {

constexpr uint16_t kTagImageProperties = 0x300A;

struct RawFile {
  ByteOrder order = ByteOrder::kLittle;
  PropertySet properties;
  Plane plane;
  CodingOptions coding;

  /// The rest of the 26-byte header, which nobody reads.
  std::array<uint8_t, 20> header{};
  /// The header length covers the sensor data; otherwise these lie at the start of the top heap.
  bool dataInHeader = false;
  HeapLayout topLayout;       ///< of the top heap
  HeapLayout propertyLayout;  ///< of the image property block and its sub-heaps
  /// Records of the top heap in front of and behind the image property block.
  std::vector<std::pair<uint16_t, Bytes>> recordsBefore, recordsBehind;

  /// Takes the plane, and records its size and an image area that leaves out `border` columns and
  /// lines on every side.
  void SetPlane(Plane newPlane, uint16_t border = 0);
};

/// The bytes of the file. Properties are written as they are: they may contradict the plane.
/// @throws WriteError as EncodeSensorData(), or when the file would be too large.
Bytes Serialize(const RawFile& file);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_RAW_FILE_H

#include "rawfile/raw_file.h"

namespace deimg::rawfile {

void RawFile::SetPlane(Plane newPlane, uint16_t border) {
  plane = std::move(newPlane);
  SensorRecord& sensor = properties.sensor;
  sensor.width = static_cast<uint16_t>(plane.width);
  sensor.height = static_cast<uint16_t>(plane.height);
  sensor.area = {border, border, static_cast<uint16_t>(plane.width - 1 - border),
                 static_cast<uint16_t>(plane.height - 1 - border)};
  sensor.auxiliary = {0, 0, static_cast<uint16_t>(plane.width - 1),
                      static_cast<uint16_t>(plane.height - 1)};
}

Bytes Serialize(const RawFile& file) {
  constexpr size_t kHeaderSize = 26;
  const Bytes data = EncodeSensorData(file.plane, file.properties.decoder, file.coding);

  Heap top;
  for (const auto& [tag, bytes] : file.recordsBefore) top.Add(tag, bytes);
  top.Add(
      kTagImageProperties,
      BuildPropertyHeap(file.properties, file.order).Serialize(file.order, file.propertyLayout));
  for (const auto& [tag, bytes] : file.recordsBehind) top.Add(tag, bytes);
  const Bytes topBytes =
      top.Serialize(file.order, file.topLayout, file.dataInHeader ? 0 : data.size());

  if (kHeaderSize + data.size() + topBytes.size() > 0x7FFFFFFF) {
    throw WriteError("raw files end at 2 GiB");
  }
  ByteWriter out(file.order);
  const uint8_t mark = file.order == ByteOrder::kLittle ? 'I' : 'M';
  out.Fill(2, mark);
  out.U32(static_cast<uint32_t>(kHeaderSize + (file.dataInHeader ? data.size() : 0)));
  out.Append(file.header);
  out.Append(data);
  out.Append(topBytes);
  return out.Take();
}

}  // namespace deimg::rawfile

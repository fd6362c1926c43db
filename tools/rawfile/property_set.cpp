#include "rawfile/property_set.h"

#include <algorithm>

namespace deimg::rawfile {
namespace {

constexpr uint16_t kLocationMask = 0xC000;
constexpr uint16_t kLocationEntry = 0x4000;

void PutRectangle(const Rectangle& r, WordWriter& words) {
  words.PutAll(std::array{r.left, r.top, r.right, r.bottom});
}

Bytes CaptureRecord(const PropertySet& p, WordWriter words, ByteOrder order) {
  words.UnreadTo(2);
  words.Put(p.sensitivity);
  words.UnreadTo(7);
  words.Put(p.wbPreset);
  words.UnreadTo(27);
  return words.Take(order);
}

Bytes LevelsRecord(const PropertySet& p, WordWriter words, ByteOrder order) {
  words.UnreadTo(13);
  words.PutAll(std::array{p.toneLevel, p.matrixLevel, p.processingSet});
  words.UnreadTo(42);
  words.Put(p.colourLevel);
  return words.Take(order);
}

Bytes SensorBytes(const SensorRecord& sensor, WordWriter words, ByteOrder order) {
  words.UnreadTo(1);
  words.Put(sensor.width);
  words.Put(sensor.height);
  words.UnreadTo(5);
  PutRectangle(sensor.area, words);
  PutRectangle(sensor.auxiliary, words);
  words.UnreadTo(17);
  return words.Take(order);
}

Bytes DecoderRecord(const DecoderSettings& settings, ByteOrder order) {
  ByteWriter out(order);
  out.U32(settings.codeSet);
  out.U32(settings.dataSkip1);
  out.U32(settings.dataSkip2);
  out.U32(0);
  return out.Take();
}

Bytes WhiteBalanceRecord(const PropertySet& p, WordWriter words, ByteOrder order) {
  words.UnreadTo(1);
  for (const auto& gains : p.presetGains) words.PutAll(gains);
  words.PutAll(p.blackLevels);
  return words.Take(order);
}

template <typename Record>
Bytes TuningRecord(const Record& record, WordWriter words, ByteOrder order) {
  Append(record, words);
  return words.Take(order);
}

/// Records of `count` values that nobody reads.
Bytes UnreadRecord(size_t count, WordWriter words, ByteOrder order) {
  words.Unread(count);
  return words.Take(order);
}
Bytes UnreadRecord32(size_t count, WordWriter words, ByteOrder order) {
  words.Unread(2 * count);
  return words.Take32(order);
}

Heap& HeapAt(Heap& root, const std::vector<uint16_t>& path) {
  Heap* heap = &root;
  for (const uint16_t tag : path) heap = &heap->SubHeap(tag);
  return *heap;
}

void Add(Heap& heap, uint16_t tag, const Bytes& data) {
  if ((tag & kLocationMask) != kLocationEntry) return heap.Add(tag, data);
  std::array<uint8_t, 8> inEntry{};
  if (data.size() != inEntry.size()) throw WriteError("a directory entry holds eight bytes");
  std::copy(data.begin(), data.end(), inEntry.begin());
  heap.AddInEntry(tag, inEntry);
}

/// A property as the typed fields give it.
Bytes TypedBytes(const PropertySet& p, uint16_t tag, ByteOrder order) {
  const WordWriter words(p.unreadSeed == 0 ? 0 : p.unreadSeed ^ tag * 0x10001u);
  switch (tag) {
    case kTagUnreadPair:
      return UnreadRecord32(2, words, order);
    case kTagUnreadDates:
      return UnreadRecord32(7, words, order);
    case kTagUnreadText:
      return UnreadRecord(16, words, ByteOrder::kLittle);
    case kTagCapture:
      return CaptureRecord(p, words, order);
    case kTagLevels:
      return LevelsRecord(p, words, order);
    case kTagUnread10AA:
      return UnreadRecord(5, words, order);
    case kTagSensor:
      return SensorBytes(p.sensor, words, order);
    case kTagDecoder:
      return DecoderRecord(p.decoder, order);
    case kTagUnread10C0:
    case kTagUnread10C1:
      return UnreadRecord(13, words, order);
    case kTagTuningTables:
      return TuningRecord(p.tables, words, order);
    case kTagColourTemperatures: {
      WordWriter record(0);
      record.PutAll(p.colourTemperatures);
      return record.Take(order);
    }
    case kTagWhiteBalance:
      return WhiteBalanceRecord(p, words, order);
    case kTagTuningBlock:
      return TuningRecord(p.tuning, words, ByteOrder::kLittle);
    default:
      throw WriteError("not one of the fourteen properties");
  }
}

}  // namespace

Bytes PropertyBytes(const PropertySet& p, uint16_t tag, ByteOrder order) {
  const auto replacement = p.overrides.find(tag);
  Bytes bytes = replacement != p.overrides.end() ? replacement->second : TypedBytes(p, tag, order);
  if (const auto more = p.trailing.find(tag); more != p.trailing.end()) {
    bytes.insert(bytes.end(), more->second.begin(), more->second.end());
  }
  return bytes;
}

Heap BuildPropertyHeap(const PropertySet& properties, ByteOrder order) {
  Heap heap;
  const auto addExtras = [&](bool first) {
    for (const ExtraProperty& extra : properties.extras) {
      if (extra.first == first) Add(HeapAt(heap, extra.path), extra.tag, extra.data);
    }
  };
  addExtras(true);
  for (const uint16_t tag : properties.order) {
    if (properties.omitted.count(tag) != 0) continue;
    const auto path = properties.paths.find(tag);
    Heap& place = path == properties.paths.end() ? heap : HeapAt(heap, path->second);
    Add(place, tag, PropertyBytes(properties, tag, order));
  }
  addExtras(false);
  return heap;
}

}  // namespace deimg::rawfile

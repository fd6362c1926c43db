/// The fourteen properties of a raw file, typed, and everything that can be wrong with them.
#ifndef DEIMG_RAWFILE_PROPERTY_SET_H
#define DEIMG_RAWFILE_PROPERTY_SET_H

#include <array>
#include <map>
#include <set>

#include "rawfile/heap.h"
#include "rawfile/sensor_encoder.h"
#include "rawfile/tuning_block.h"
#include "rawfile/tuning_tables.h"

namespace deimg::rawfile {

/// Tags of the properties. Those named "unread" have to be there but nothing looks at them.
enum Tag : uint16_t {
  kTagUnreadPair = 0x5803,  ///< two 32-bit values held in the directory entry
  kTagUnreadDates = 0x1810,
  kTagUnreadText = 0x080B,
  kTagCapture = 0x102A,  ///< sensitivity and white-balance preset
  kTagLevels = 0x102D,   ///< recorded settings
  kTagUnread10AA = 0x10AA,
  kTagSensor = 0x1031,   ///< geometry
  kTagDecoder = 0x1835,  ///< code set and bytes to skip
  kTagUnread10C0 = 0x10C0,
  kTagUnread10C1 = 0x10C1,
  kTagTuningTables = 0x10C2,
  kTagColourTemperatures = 0x10A8,
  kTagWhiteBalance = 0x10A9,  ///< preset gains and black levels
  kTagTuningBlock = 0x0036,
};

/// All of them, in the order in which readers look for them.
constexpr std::array<uint16_t, 14> kPropertyTags = {
    kTagUnreadPair,   kTagUnreadDates, kTagUnreadText,   kTagCapture,
    kTagLevels,       kTagUnread10AA,  kTagSensor,       kTagDecoder,
    kTagUnread10C0,   kTagUnread10C1,  kTagTuningTables, kTagColourTemperatures,
    kTagWhiteBalance, kTagTuningBlock};

/// Columns and lines of a rectangle of the plane; right and bottom are inside.
struct Rectangle {
  uint16_t left = 0, top = 0, right = 0, bottom = 0;
};

struct SensorRecord {
  uint16_t width = 0, height = 0;
  Rectangle area;       ///< the part of the plane that is developed
  Rectangle auxiliary;  ///< not used in development
};

/// A property besides the fourteen, or a second copy of one of them.
struct ExtraProperty {
  uint16_t tag = 0;  ///< with location bits 01, `data` are the eight bytes held in the entry
  Bytes data;
  std::vector<uint16_t> path;  ///< as PropertySet::paths
  bool first = false;          ///< in front of the fourteen instead of behind them
};

struct PropertySet {
  int16_t sensitivity = 160;  ///< 160, 192, 224, 256, 268
  int16_t wbPreset = 0;       ///< -1 to 6
  int16_t toneLevel = 0;      ///< -1, 0, 1
  int16_t matrixLevel = 0;    ///< -1, 0, 1
  int16_t processingSet = 0;  ///< -1, 0, 1, 3
  int16_t colourLevel = 0;    ///< -1, 0, 1
  SensorRecord sensor;
  DecoderSettings decoder;
  TuningTables tables;
  std::array<uint16_t, 8>
      colourTemperatures{};  ///< kelvin; [0] for preset -1, [p + 1] for preset p
  /// By preset: gains of red, green of red lines, green of blue lines, blue; 1024 = 1.
  std::array<std::array<uint16_t, 4>, 7> presetGains{};
  /// Black levels of green on red lines, red, blue, green on blue lines.
  std::array<uint16_t, 4> blackLevels{};
  TuningBlock tuning = PlainTuning();

  /// Seed of the words and records nobody reads; 0: they are zero.
  uint32_t unreadSeed = 0;
  /// Order of the directory entries.
  std::vector<uint16_t> order{kPropertyTags.begin(), kPropertyTags.end()};
  /// Tags of the nested sub-heaps that hold a property, outermost first; default: none.
  std::map<uint16_t, std::vector<uint16_t>> paths;
  /// Bytes to write in place of a property's own, as they stand in the file.
  std::map<uint16_t, Bytes> overrides;
  /// Bytes to append to a property: readers take no more than they know.
  std::map<uint16_t, Bytes> trailing;
  std::set<uint16_t> omitted;  ///< properties to leave out
  std::vector<ExtraProperty> extras;
};

/// The bytes of one property as they stand in the file, overrides and trailing bytes included.
Bytes PropertyBytes(const PropertySet& properties, uint16_t tag, ByteOrder order);

/// The image property block.
Heap BuildPropertyHeap(const PropertySet& properties, ByteOrder order);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_PROPERTY_SET_H

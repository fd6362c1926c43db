#include "rawfile/tuning_tables.h"

#include <cassert>

namespace deimg::rawfile {
namespace {

/// Every record of a group; `tagged` records have a group tag, and `unread` words end each one.
template <size_t N>
void AppendGroup(const TemperatureGroup<N>& group, bool tagged, size_t unread, WordWriter& words) {
  for (const TemperatureRecord<N>& record : group) {
    words.Put32(record.kelvin);
    if (tagged) words.Put(record.groupTag);
    words.PutAll(record.values);
    words.Unread(unread);
  }
}

}  // namespace

void Append(const TuningTables& t, WordWriter& words) {
  const size_t start = words.size();
  words.Unread(1);
  words.PutAll(std::array{t.unread0, t.layout, t.blueOffset, t.redOffset, t.secondChromaGain,
                          t.firstChromaGain, t.chromaGainScale, t.unread7[0], t.unread7[1]});
  for (const auto& group : t.matrices) AppendGroup(group, true, 1, words);
  for (const auto& group : t.colourOffsets) AppendGroup(group, true, 1, words);
  for (const auto& group : t.colourGains) AppendGroup(group, true, 0, words);
  AppendGroup(t.luminanceWeights, false, 1, words);
  assert(words.size() == start + kTuningTablesSize / 2);
  static_cast<void>(start);
}

}  // namespace deimg::rawfile

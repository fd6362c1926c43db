#include "rawfile/heap.h"

#include <algorithm>

namespace deimg::rawfile {

void Heap::Add(uint16_t tag, Bytes data) {
  entries_.push_back({tag, false, std::move(data), nullptr});
}

void Heap::AddInEntry(uint16_t tag, const std::array<uint8_t, 8>& data) {
  entries_.push_back({tag, true, Bytes(data.begin(), data.end()), nullptr});
}

Heap& Heap::SubHeap(uint16_t tag) {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [tag](const Entry& entry) {
    return entry.tag == tag && entry.heap != nullptr;
  });
  if (found != entries_.end()) return *found->heap;
  entries_.push_back({tag, false, {}, std::make_unique<Heap>()});
  return *entries_.back().heap;
}

Bytes Heap::Serialize(ByteOrder order, const HeapLayout& layout, size_t reserved) const {
  constexpr size_t kEntrySize = 10;
  if (entries_.size() > 0xFFFF) throw WriteError("too many records in one heap");
  const size_t directorySize = 2 + kEntrySize * entries_.size();

  ByteWriter records(order);
  const size_t recordsStart =
      reserved + (layout.directoryFirst ? layout.gap + directorySize : size_t{0});
  struct Place {
    size_t offset;
    size_t size;
  };
  std::vector<Place> places(entries_.size());
  for (size_t i = 0; i < entries_.size(); ++i) {
    const size_t index = layout.reverseRecords ? entries_.size() - 1 - i : i;
    const Entry& entry = entries_[index];
    if (entry.inEntry) continue;
    const Bytes data = entry.heap ? entry.heap->Serialize(order, layout) : entry.data;
    records.Fill(layout.gap, 0);
    places[index] = {recordsStart + records.size(), data.size()};
    records.Append(data);
  }
  const Bytes recordBytes = records.Take();

  const size_t directoryOffset = layout.directoryFirst
                                     ? reserved + layout.gap
                                     : recordsStart + recordBytes.size() + layout.gap;
  if (directoryOffset > 0xFFFFFFFF - directorySize) throw WriteError("heap larger than 4 GiB");

  ByteWriter heap(order);
  if (!layout.directoryFirst) heap.Append(recordBytes);
  heap.Fill(layout.gap, 0);
  heap.U16(static_cast<uint32_t>(entries_.size()));
  for (size_t i = 0; i < entries_.size(); ++i) {
    heap.U16(entries_[i].tag);
    if (entries_[i].inEntry) {
      heap.Append(entries_[i].data);
    } else {
      heap.U32(static_cast<uint32_t>(places[i].size));
      heap.U32(static_cast<uint32_t>(places[i].offset));
    }
  }
  if (layout.directoryFirst) heap.Append(recordBytes);
  heap.U32(static_cast<uint32_t>(directoryOffset));
  return heap.Take();
}

}  // namespace deimg::rawfile

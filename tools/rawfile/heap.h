/// Property heaps: records behind a directory that the heap's last four bytes point to.
#ifndef DEIMG_RAWFILE_HEAP_H
#define DEIMG_RAWFILE_HEAP_H

#include <array>
#include <memory>

#include "rawfile/bytes.h"

namespace deimg::rawfile {

/// Where the parts of a heap lie. Readers have to cope with every layout.
struct HeapLayout {
  bool directoryFirst = false;  ///< directory in front of the records instead of behind them
  bool reverseRecords = false;  ///< records stored last entry first
  uint32_t gap = 0;             ///< unused bytes in front of every record and of the directory
};

/// One heap: a list of records in directory order.
///
/// A tag carries its location in bits 15-14 (0: data in the heap, 1: eight bytes in the entry) and
/// its type in bits 13-11; 0x2000, 0x2800 and 0x3000 are sub-heaps. Nothing here is checked: a heap
/// holds whatever it is given.
class Heap {
 public:
  /// A record whose data, already in the file's byte order, lie in the heap.
  void Add(uint16_t tag, Bytes data);
  /// A record whose eight bytes take the place of size and offset in the directory entry.
  void AddInEntry(uint16_t tag, const std::array<uint8_t, 8>& data);
  /// The sub-heap with this tag, made at the end of the directory when there is none yet.
  Heap& SubHeap(uint16_t tag);

  /// The heap's bytes. The first `reserved` bytes of the heap belong to somebody else: the result
  /// starts behind them, and every offset counts from their beginning.
  Bytes Serialize(ByteOrder order, const HeapLayout& layout = {}, size_t reserved = 0) const;

 private:
  struct Entry {
    uint16_t tag;
    bool inEntry;
    Bytes data;
    std::unique_ptr<Heap> heap;
  };

  std::vector<Entry> entries_;
};

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_HEAP_H

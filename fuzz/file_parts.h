/// Raw files taken apart, and written again with sizes, offsets and bits in order.
#ifndef DEIMG_FUZZ_FILE_PARTS_H
#define DEIMG_FUZZ_FILE_PARTS_H

#include <vector>

#include "raw_file_input.h"
#include "rawfile/heap.h"

namespace deimg::fuzz {

/// A file without its filler: what a `raw_file` input holds behind the recipe.
struct SplitFile {
  Filler filler;
  rawfile::Bytes bytes;
};

/// A property, in a tree.
struct Entry {
  std::uint16_t tag;
  rawfile::Bytes bytes;
  std::vector<Entry> heap;  // in place of the bytes, of a sub-heap
  bool isHeap = false;
};
using Entries = std::vector<Entry>;

struct Place {
  Entries* heap;
  std::size_t index;

  Entry& entry() const { return (*heap)[index]; }
  Entries::iterator at() const { return heap->begin() + static_cast<std::ptrdiff_t>(index); }
};

/// One of the code's symbols, with the bits of the difference behind it.
struct Symbol {
  std::uint8_t code;
  std::uint32_t difference;
};
using Block = std::vector<Symbol>;  // the first value, then runs and sizes

/// What the data need to know of the properties is looked up in these, so that the data follow when
/// a property is changed.
class FileParts {
 public:
  /// False when the file cannot be taken apart. Coded data count up to the first block that is not
  /// in order.
  bool Read(const Pieces& file);
  /// False when the parts make no file any more, or too large a one.
  bool Write(SplitFile& out);

  /// Every property, in the order in which they are looked at.
  std::vector<Place> Places();
  /// The properties that say where the data lie, and what these come to; false without one.
  bool FindLayout();

  std::uint16_t Word(const Entry& property, std::size_t index) const {
    return LoadU16(property.bytes.data() + 2 * index, bigEndian);
  }
  void PutWord(Entry& property, std::size_t index, std::size_t value) const;

  bool bigEndian = false;
  Entries top;
  rawfile::HeapLayout layout;
  Entry* sensor = nullptr;
  Entry* decoder = nullptr;
  std::size_t samples = 0;
  std::vector<Block> blocks;

 private:
  rawfile::ByteOrder order() const {
    return bigEndian ? rawfile::ByteOrder::kBig : rawfile::ByteOrder::kLittle;
  }
  Entry* Property(std::uint16_t tag, std::size_t bytes);

  rawfile::Bytes header_;
  rawfile::Bytes lowBits_;
  std::uint8_t filler_ = 0;
  std::size_t lowBytes_ = 0, skip_ = 0;
  std::uint32_t codeSet_ = 0;
};

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_FILE_PARTS_H

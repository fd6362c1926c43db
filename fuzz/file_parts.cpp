#include "file_parts.h"

#include <algorithm>
#include <utility>

#include "decode/code_sets.h"
#include "decode/code_tree.h"
#include "props/props_heap.h"
#include "rawfile/code_sets.h"
#include "rawfile/property_set.h"

namespace deimg::fuzz {
namespace {

constexpr std::size_t kHeaderBytes = 26;
constexpr std::size_t kFirstRead = 65536;  // coded bytes that a decoder insists on
constexpr std::size_t kMostHead = 65535;
constexpr int kDeepestHeap = 8;
constexpr std::size_t kMostEntries = 256;

bool ReadHeap(Bytes heap, bool bigEndian, int depth, Entries& entries) {
  if (depth > kDeepestHeap || heap.size() < 6) return false;
  const std::size_t directory = LoadU32(heap.last(4).data(), bigEndian);
  if (directory > heap.size() - 6) return false;
  const std::size_t count = LoadU16(heap.data() + directory, bigEndian);
  if (count > kMostEntries || count * entry::kBytes > heap.size() - directory - 6) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const Bytes at = heap.subspan(directory + 2 + i * entry::kBytes, entry::kBytes);
    Entry read{LoadU16(at.data(), bigEndian), {at.begin() + 2, at.end()}, {}};
    if ((read.tag & entry::kLocationMask) != entry::kInEntry) {
      const std::size_t size = LoadU32(at.data() + 2, bigEndian);
      const std::size_t offset = LoadU32(at.data() + 6, bigEndian);
      if (offset > heap.size() || size > heap.size() - offset) return false;
      const Bytes record = heap.subspan(offset, size);
      read.isHeap = entry::IsSubHeap(read.tag) && ReadHeap(record, bigEndian, depth + 1, read.heap);
      read.bytes.assign(record.begin(), record.end());
    }
    entries.push_back(std::move(read));
  }
  return true;
}

rawfile::Bytes WriteHeap(const Entries& entries, rawfile::ByteOrder order,
                         const rawfile::HeapLayout& layout) {
  rawfile::Heap heap;
  for (const Entry& e : entries) {
    if ((e.tag & entry::kLocationMask) == entry::kInEntry) {
      std::array<std::uint8_t, 8> inEntry{};
      std::copy_n(e.bytes.begin(), std::min(e.bytes.size(), inEntry.size()), inEntry.begin());
      heap.AddInEntry(e.tag, inEntry);
    } else {
      heap.Add(e.tag, e.isHeap ? WriteHeap(e.heap, order, layout) : e.bytes);
    }
  }
  return heap.Serialize(order, layout);
}

/// Every entry of a heap and its sub-heaps, in the order in which they are looked at.
void FindPlaces(Entries& heap, std::vector<Place>& places) {
  for (std::size_t i = 0; i < heap.size(); ++i) {
    places.push_back({&heap, i});
    FindPlaces(heap[i].heap, places);
  }
}

/// Bits of coded bytes, without those stuffed behind 0xFF.
class BitReader {
 public:
  explicit BitReader(Bytes bytes) : bytes_(bytes) {}

  /// Both are false at the end, the second also when the bits are no code.
  bool Take(int count, std::uint32_t& value) {
    for (value = 0; count > 0; --count) {
      if (byte_ >= bytes_.size()) return false;
      value = value << 1 | (bytes_[byte_] >> (7 - used_) & 1u);
      if (++used_ < 8) continue;
      used_ = 0;
      byte_ += bytes_[byte_] == 0xFF ? 2u : 1u;
    }
    return true;
  }
  bool Take(std::span<const CodeTreeNode> tree, Symbol& symbol) {
    std::size_t node = 0;
    for (std::uint32_t bit = 0; tree[node].value == CodeTreeNode::kInner;) {
      if (!Take(1, bit) || tree[node].child[bit] == 0) return false;
      node = tree[node].child[bit];
    }
    symbol.code = static_cast<std::uint8_t>(tree[node].value);
    return Take(symbol.code & 15, symbol.difference);
  }

 private:
  const Bytes bytes_;
  std::size_t byte_ = 0;
  int used_ = 0;
};

class BitWriter {
 public:
  explicit BitWriter(rawfile::Bytes& out) : out_(out) {}

  void Put(std::uint32_t bits, int count) {
    while (--count >= 0) {
      byte_ = byte_ << 1 | (bits >> count & 1);
      if (++used_ < 8) continue;
      out_.push_back(static_cast<std::uint8_t>(byte_));
      if (out_.back() == 0xFF) out_.push_back(0);
      used_ = 0;
    }
  }
  void Put(const rawfile::CodeBook& book, const Symbol& symbol) {
    Put(book[symbol.code].bits, book[symbol.code].length);
    Put(symbol.difference, symbol.code & 15);
  }
  void FillLastByte() { Put(0, (8 - used_) % 8); }

 private:
  rawfile::Bytes& out_;
  std::uint32_t byte_ = 0;
  int used_ = 0;
};

/// The blocks up to the first one that is not in order.
std::vector<Block> ReadBlocks(Bytes coded, const CodeSet& codes, std::size_t count) {
  const FirstValueTree firstValues(codes.firstValue);
  const RunSizeTree runSizes(codes.runSize);
  BitReader bits(coded);
  std::vector<Block> blocks;
  while (blocks.size() < count) {
    Block block(1);
    if (!bits.Take(firstValues.nodes, block[0])) break;
    for (int k = 0; k < 63; k += (block.back().code >> 4) + 1) {
      if (!bits.Take(runSizes.nodes, block.emplace_back())) return blocks;
      if (block.back().code == 0) break;
    }
    blocks.push_back(std::move(block));
  }
  return blocks;
}

}  // namespace

bool FileParts::Read(const Pieces& file) {
  rawfile::Bytes whole(file.head.begin(), file.head.end());
  whole.resize(whole.size() + file.fill, file.fillValue);
  whole.insert(whole.end(), file.tail.begin(), file.tail.end());
  if (whole.size() < kHeaderBytes) return false;
  header_.assign(whole.data(), whole.data() + kHeaderBytes);
  filler_ = file.fillValue;
  bigEndian = header_[0] == 'M';
  const std::size_t heap = LoadU32(header_.data() + 2, bigEndian);
  if (heap > whole.size() || !ReadHeap(Bytes(whole).subspan(heap), bigEndian, 0, top)) return false;
  const Bytes data = Bytes(whole).subspan(kHeaderBytes);
  if (!FindLayout() || data.size() < lowBytes_ + skip_) return false;
  lowBits_.assign(data.data(), data.data() + lowBytes_);
  blocks = ReadBlocks(data.subspan(lowBytes_ + skip_), ChooseCodeSet(codeSet_), samples / 64);
  return true;
}

bool FileParts::Write(SplitFile& out) {
  if (!FindLayout()) return false;
  lowBits_.resize(lowBytes_, 0x1B);
  rawfile::Bytes coded(skip_, filler_);
  const rawfile::CodeSet& books = rawfile::CodeSetFor(codeSet_);
  BitWriter bits(coded);
  for (const Block& block : blocks) {
    for (const Symbol& s : block) bits.Put(&s == &block[0] ? books.firstValue : books.runSize, s);
  }
  bits.FillLastByte();
  const std::size_t fill = kFirstRead - std::min(coded.size(), kFirstRead);
  const std::size_t dataEnd = kHeaderBytes + lowBytes_ + coded.size();
  if (dataEnd > kMostHead) return false;
  rawfile::ByteWriter bytes(order());
  bytes.Append({header_.data(), 2});
  bytes.U32(static_cast<std::uint32_t>(dataEnd + fill));
  bytes.Append({header_.data() + 6, kHeaderBytes - 6});
  bytes.Append(lowBits_);
  bytes.Append(coded);
  bytes.Append(WriteHeap(top, order(), layout));
  out = {Filler::Of(dataEnd, fill, filler_), bytes.Take()};
  return true;
}

std::vector<Place> FileParts::Places() {
  std::vector<Place> places;
  FindPlaces(top, places);
  return places;
}

bool FileParts::FindLayout() {
  sensor = Property(rawfile::kTagSensor, 18);
  decoder = Property(rawfile::kTagDecoder, 12);
  if (sensor == nullptr || decoder == nullptr) return false;
  const auto value = [&](std::size_t i) {
    return LoadU32(decoder->bytes.data() + 4 * i, bigEndian);
  };
  samples = std::size_t{Word(*sensor, 1)} * Word(*sensor, 2);
  lowBytes_ = samples / 4;
  codeSet_ = value(0);
  skip_ = std::size_t{value(1)} + value(2);
  return samples <= kLargestPlane && skip_ < kFirstRead;
}

void FileParts::PutWord(Entry& property, std::size_t index, std::size_t value) const {
  rawfile::ByteWriter word(order());
  word.U16(static_cast<std::uint32_t>(value));
  const rawfile::Bytes bytes = word.Take();
  std::copy(bytes.begin(), bytes.end(), property.bytes.data() + 2 * index);
}

Entry* FileParts::Property(std::uint16_t tag, std::size_t bytes) {
  const std::vector<Place> places = Places();
  const auto found = std::find_if(places.begin(), places.end(),
                                  [&](const Place& p) { return p.entry().tag == tag; });
  return found == places.end() || found->entry().bytes.size() < bytes ? nullptr : &found->entry();
}

}  // namespace deimg::fuzz

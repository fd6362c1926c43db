#include "file_mutator.h"

#include <algorithm>
#include <optional>
#include <random>
#include <vector>

#include "base/byte_order.h"
#include "props/image_props.h"
#include "rawfile/code_sets.h"
#include "rawfile/heap.h"
#include "rawfile/property_set.h"

namespace deimg::fuzz {
namespace {

constexpr std::size_t kHeaderBytes = 26;
constexpr std::size_t kEntryBytes = 10;
constexpr int kDeepest = 6;

using Random = std::minstd_rand;

std::size_t Below(Random& random, std::size_t n) { return n == 0 ? 0 : random() % n; }

/// A value that code is likely to care about.
std::uint16_t Word(Random& random) {
  constexpr std::uint16_t kValues[] = {0, 1, 2, 3, 5, 6, 7, 8, 0x7FFF, 0x8000, 0xFFFF};
  return random() % 2 == 0 ? kValues[Below(random, std::size(kValues))]
                           : static_cast<std::uint16_t>(random() >> 4);
}

// ---- properties -------------------------------------------------------------------------------

bool IsInEntry(std::uint16_t tag) { return tag >> 14 == 1; }
bool IsSubHeap(std::uint16_t tag) {
  const int type = tag & 0x3800;
  return tag >> 14 == 0 && (type == 0x2000 || type == 0x2800 || type == 0x3000);
}

struct Node {
  std::uint16_t tag = 0;
  rawfile::Bytes data;
  std::vector<Node> children;  // of a sub-heap that could be read
};

/// The records of a heap; none when its directory leaves it.
std::optional<std::vector<Node>> ReadHeap(Bytes heap, bool big, int depth = 0) {
  if (heap.size() < 6 || depth > kDeepest) return std::nullopt;
  const std::size_t at = LoadU32(heap.data() + heap.size() - 4, big);
  if (at > heap.size() - 6) return std::nullopt;
  const std::size_t count = LoadU16(heap.data() + at, big);
  if (count * kEntryBytes > heap.size() - at - 2) return std::nullopt;
  std::vector<Node> nodes(count);
  for (std::size_t i = 0; i < count; ++i) {
    const Bytes entry = heap.subspan(at + 2 + i * kEntryBytes, kEntryBytes);
    nodes[i].tag = LoadU16(entry.data(), big);
    Bytes data = entry.subspan(2);
    if (!IsInEntry(nodes[i].tag)) {
      const std::size_t size = LoadU32(entry.data() + 2, big), offset = LoadU32(&entry[6], big);
      if (offset > heap.size() || size > heap.size() - offset) return std::nullopt;
      data = heap.subspan(offset, size);
    }
    nodes[i].data.assign(data.begin(), data.end());
    if (!IsSubHeap(nodes[i].tag)) continue;
    if (auto children = ReadHeap(data, big, depth + 1)) nodes[i].children = std::move(*children);
  }
  return nodes;
}

rawfile::Bytes WriteHeap(const std::vector<Node>& nodes, bool big,
                         const rawfile::HeapLayout& layout) {
  rawfile::Heap heap;
  for (const Node& node : nodes) {
    if (IsInEntry(node.tag)) {
      std::array<std::uint8_t, 8> data{};
      std::copy_n(node.data.begin(), std::min<std::size_t>(node.data.size(), 8), data.begin());
      heap.AddInEntry(node.tag, data);
    } else {
      heap.Add(node.tag, node.children.empty() ? node.data : WriteHeap(node.children, big, layout));
    }
  }
  return heap.Serialize(big ? rawfile::ByteOrder::kBig : rawfile::ByteOrder::kLittle, layout);
}

/// Every list of records, the outermost first.
void CollectLists(std::vector<Node>& nodes, std::vector<std::vector<Node>*>& lists) {
  lists.push_back(&nodes);
  for (Node& node : nodes) {
    if (!node.children.empty()) CollectLists(node.children, lists);
  }
}

void PutWord(rawfile::Bytes& data, std::size_t word, std::uint16_t value, bool big) {
  if (2 * word + 2 > data.size()) return;
  data[2 * word + (big ? 1 : 0)] = static_cast<std::uint8_t>(value);
  data[2 * word + (big ? 0 : 1)] = static_cast<std::uint8_t>(value >> 8);
}

void ChangeProperty(std::vector<Node>& nodes, bool big, Random& random) {
  std::vector<std::vector<Node>*> lists;
  CollectLists(nodes, lists);
  std::vector<Node>& list = *lists[Below(random, lists.size())];
  if (list.empty()) return;
  const auto at = list.begin() + static_cast<std::ptrdiff_t>(Below(random, list.size()));
  switch (random() % 8) {
    case 0:
      list.erase(at);
      break;
    case 1: {
      const Node copy = *at;
      list.insert(list.begin() + static_cast<std::ptrdiff_t>(Below(random, list.size() + 1)), copy);
      break;
    }
    case 2:
      std::iter_swap(at, list.begin() + static_cast<std::ptrdiff_t>(Below(random, list.size())));
      break;
    case 3: {
      const Node inner = *at;
      *at = {static_cast<std::uint16_t>(0x2000 | random() % 0x800), {}, {inner}};
      break;
    }
    case 4:
      at->data.resize(Below(random, 2 * at->data.size() + 8));
      break;
    case 5:
      at->tag = Word(random);
      break;
    default:
      for (std::size_t n = 1 + random() % 4; n > 0; --n) {
        PutWord(at->data, Below(random, at->data.size() / 2), Word(random), big);
      }
  }
}

// ---- sensor data ------------------------------------------------------------------------------

/// Another width and height, in the record and in the low bits.
void ChangeGeometry(std::vector<Node>& nodes, rawfile::Bytes& front, std::size_t lowBits, bool big,
                    Random& random) {
  std::vector<std::vector<Node>*> lists;
  CollectLists(nodes, lists);
  for (std::vector<Node>* const list : lists) {
    for (Node& node : *list) {
      if (node.tag != rawfile::kTagSensor) continue;
      const auto width = static_cast<std::uint16_t>(6 + 2 * (random() % 30));
      const auto height = static_cast<std::uint16_t>(1 + random() % 40);
      PutWord(node.data, offsetof(SensorRecord, width) / 2, width, big);
      PutWord(node.data, offsetof(SensorRecord, height) / 2, height, big);
      const auto start = front.begin() + kHeaderBytes;
      front.erase(start, start + static_cast<std::ptrdiff_t>(lowBits));
      front.insert(front.begin() + kHeaderBytes, std::size_t{width} * height / 4, 0x1B);
      return;
    }
  }
}

/// A code word and the bits of its difference.
struct Token {
  std::vector<bool> bits;
  bool first;  // value of a block
};

std::vector<bool> BitsOf(std::uint32_t value, unsigned length) {
  std::vector<bool> bits;
  while (length-- > 0) bits.push_back((value >> length & 1) != 0);
  return bits;
}

/// The bits of coded bytes, without those that are stuffed behind every 0xFF.
std::vector<bool> Unpack(Bytes coded) {
  std::vector<bool> bits;
  for (std::size_t i = 0; i < coded.size(); i += coded[i] == 0xFF ? 2u : 1u) {
    const std::vector<bool> byte = BitsOf(coded[i], 8);
    bits.insert(bits.end(), byte.begin(), byte.end());
  }
  return bits;
}

/// The token at `at`; none where no word fits or the bits end.
std::optional<Token> TokenAt(const std::vector<bool>& bits, std::size_t at,
                             const rawfile::CodeBook& book, bool first, std::uint8_t& symbol) {
  std::uint32_t ahead = 0;
  for (std::size_t i = at; i < at + 16; ++i) ahead = ahead << 1 | (i < bits.size() && bits[i]);
  for (unsigned s = 0; s < book.size(); ++s) {
    const std::size_t size = book[s].length + (s & 15);
    if (book[s].length == 0 || ahead >> (16 - book[s].length) != book[s].bits) continue;
    if (at + size > bits.size()) return std::nullopt;
    symbol = static_cast<std::uint8_t>(s);
    const auto start = bits.begin() + static_cast<std::ptrdiff_t>(at);
    return Token{{start, start + static_cast<std::ptrdiff_t>(size)}, first};
  }
  return std::nullopt;
}

/// Changes a symbol or a difference, drops one, or repeats one.
bool ChangeCode(rawfile::Bytes& front, std::size_t start, std::uint32_t codeSet, Random& random) {
  if (start >= front.size()) return false;
  const rawfile::CodeSet& codes = rawfile::CodeSetFor(codeSet);
  const std::vector<bool> bits = Unpack(Bytes(front).subspan(start));
  std::vector<Token> tokens;
  std::size_t at = 0;
  for (unsigned entry = 64; at < bits.size();) {
    const bool first = entry > 62;
    std::uint8_t symbol = 0;
    const auto token = TokenAt(bits, at, first ? codes.firstValue : codes.runSize, first, symbol);
    if (!token) break;
    entry = first ? 0 : symbol == 0 ? 64 : entry + (symbol >> 4) + 1;
    at += token->bits.size();
    tokens.push_back(*token);
  }
  if (tokens.empty()) return false;
  const std::size_t chosen = Below(random, tokens.size());
  const auto place = tokens.begin() + static_cast<std::ptrdiff_t>(chosen);
  switch (random() % 4) {
    case 0:
      tokens.erase(place);
      break;
    case 1: {
      const Token copy = *place;
      tokens.insert(place, copy);
      break;
    }
    default: {
      const rawfile::CodeBook& book = place->first ? codes.firstValue : codes.runSize;
      unsigned symbol = 0;
      do symbol = static_cast<unsigned>(Below(random, book.size()));
      while (book[symbol].length == 0);
      place->bits = BitsOf(book[symbol].bits, book[symbol].length);
      for (unsigned n = symbol & 15; n > 0; --n) place->bits.push_back(random() % 2 == 0);
    }
  }
  std::vector<bool> out;
  for (const Token& token : tokens) out.insert(out.end(), token.bits.begin(), token.bits.end());
  out.insert(out.end(), bits.begin() + static_cast<std::ptrdiff_t>(at), bits.end());
  out.resize((out.size() + 7) / 8 * 8);
  front.resize(start);
  for (std::size_t i = 0; i < out.size(); i += 8) {
    unsigned byte = 0;
    for (std::size_t k = 0; k < 8; ++k) byte = byte << 1 | (out[i + k] ? 1u : 0u);
    front.push_back(static_cast<std::uint8_t>(byte));
    if (byte == 0xFF) front.push_back(0);
  }
  return true;
}

}  // namespace

bool MutateFile(const Pieces& file, unsigned seed, FileParts& parts) {
  Random random(seed + 1);
  PieceStream input(file);
  ImagePropsBlock block;
  static ImageProps props;
  props = {};
  if (file.head.size() < kHeaderBytes || ReadImagePropsBlock(*input.get(), block) != DEIMG_OK ||
      pxfPsReadOpenImageProps(block, props) != DEIMG_OK ||
      LoadU32(file.head.data() + 2, block.bigEndian) != file.head.size() + file.fill) {
    return false;
  }
  auto nodes = ReadHeap(file.tail, block.bigEndian);
  const std::size_t lowBits = std::size_t{props.sensor.width} * props.sensor.height / 4;
  if (!nodes || kHeaderBytes + lowBits > file.head.size()) return false;
  parts.front.assign(file.head.begin(), file.head.end());
  switch (random() % 8) {
    case 0:
      ChangeGeometry(*nodes, parts.front, lowBits, block.bigEndian, random);
      break;
    case 1:
    case 2:
    case 3:
      if (!ChangeCode(parts.front, kHeaderBytes + lowBits + props.dataSkip1() + props.dataSkip2(),
                      props.codeSetIndex(), random)) {
        return false;
      }
      break;
    default:
      ChangeProperty(*nodes, block.bigEndian, random);
  }
  parts.heap = WriteHeap(*nodes, block.bigEndian, {random() % 4 == 0, false, 0});
  const auto length = static_cast<std::uint32_t>(parts.front.size() + file.fill);
  rawfile::ByteWriter headerLength(block.bigEndian ? rawfile::ByteOrder::kBig
                                                   : rawfile::ByteOrder::kLittle);
  headerLength.U32(length);
  std::ranges::copy(headerLength.Take(), parts.front.begin() + 2);
  return true;
}

}  // namespace deimg::fuzz

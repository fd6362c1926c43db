#include "decode/coded_data_reader.h"

#include <algorithm>
#include <cstring>

#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr int kNoEndSymbol = -1;
constexpr int kEndOfBlock = 0;
constexpr std::uint32_t kLastEntry = 63;

/// Bytes behind the buffer, of any value, that a block which begins inside it may take for its own.
constexpr std::uint32_t kSlackBytes = 256;
static_assert(kBlockSamples * DifferenceTable::kMostBits / 8 + 16 <= kSlackBytes);

static_assert(DifferenceTable::kMostBits <= 49, "a first value before any refill");
static_assert(SymbolTable::kMostBits + DifferenceTable::kMostBits <= 56, "look-ups to a refill");

/// Stores what a look-up found, `at` being the entry before.
inline void Store(const CodedSymbols& symbols, std::uint64_t next, std::int16_t* at) {
  at[symbols.firstAdvance()] = symbols.firstDifference();
  at[symbols.last().advance()] = symbols.last().DifferenceBehind(next);
}

/// The same where a block may end: what lies `distance` entries on or nearer. The entry behind it
/// takes the rest.
inline void StoreToEnd(const CodedSymbols& symbols, std::uint64_t next, std::uint32_t distance,
                       std::int16_t* at) {
  at[std::min(symbols.firstAdvance(), distance + 1)] = symbols.firstDifference();
  at[std::min(symbols.last().advance(), distance + 1)] = symbols.last().DifferenceBehind(next);
}

}  // namespace

CodedDataReader::CodedDataReader(CallerStream& source, const CodeSet& codes)
    : source_(source),
      firstValues_(codes.firstValue.counts, codes.firstValue.symbols, kNoEndSymbol),
      runSizes_(codes.runSize.counts, codes.runSize.symbols, kEndOfBlock),
      symbols_(runSizes_),
      firstValueTree_(codes.firstValue),
      runSizeTree_(codes.runSize) {}

bool CodedDataReader::AllocateBuffer() {
  buffer_ = BlockOf<std::uint8_t>::Zeroed(kBufferBytes + kSlackBytes);
  return static_cast<bool>(buffer_);
}

Result CodedDataReader::Begin(std::uint64_t skip) {
  std::uint32_t delivered = 0;
  DEIMG_RETURN_IF_FAILED(Read(source_, buffer_.get(), kBufferBytes, delivered));
  if (delivered < kBufferBytes || skip >= delivered) return DEIMG_BAD_DATA;
  ended_ = false;
  RemoveStuffing(static_cast<std::uint32_t>(skip), delivered);
  return DEIMG_OK;
}

Result CodedDataReader::Decode(std::uint32_t count, DifferenceBlocks& blocks) {
  blocks.Clear();
  BitWindow window(buffer_.get(), nextBit_);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (DecodeBlock(window, blocks.block(i))) {
      nextBit_ = window.position();
    } else {
      DEIMG_RETURN_IF_FAILED(DecodeBitByBit(blocks.block(i)));
      window = BitWindow(buffer_.get(), nextBit_);
    }
  }
  return DEIMG_OK;
}

/// Decodes a block that ends in front of the buffer's last bit; false when it does not, or is not
/// in order.
bool CodedDataReader::DecodeBlock(BitWindow& from, std::int16_t* block) const {
  BitWindow window = from;  // in registers
  window.Refill();
  const CodedSize first = firstValues_.Decode(window.bits());
  if (first.bits() == 0) return false;
  block[0] = first.DifferenceBehind(window.bits());
  window.Use(first.bits());
  for (std::uint32_t k = 0; k < kLastEntry;) {
    window.Refill();
    for (int i = 0; i < 2; ++i) {
      const CodedSymbols& symbols = symbols_.Decode(window.bits());
      const std::uint32_t advance = symbols.last().advance();
      if (k + advance >= kLastEntry) [[unlikely]] {
        if (advance == CodedSize::kNoCode) {
          const CodedSize symbol = runSizes_.DecodeLong(window.bits());
          k += symbol.advance();
          if (k > kLastEntry) return false;
          block[k] = symbol.DifferenceBehind(window.bits());
          window.Use(symbol.bits());
        } else {
          const std::uint32_t distance = kLastEntry - k;
          StoreToEnd(symbols, window.bits(), distance, block + k);
          const std::uint32_t used = symbols.BitsToEnd(distance);
          if (used == 0) return false;
          window.Use(used);
          k = kLastEntry;
        }
        break;
      }
      Store(symbols, window.bits(), block + k);
      window.Use(symbols_.Bits(window.bits()));
      k += advance;
    }
  }
  from = window;
  return window.position() < endBit_;
}

Result CodedDataReader::DecodeBitByBit(std::int16_t* block) {
  std::fill_n(block, kBlockSamples, std::int16_t{0});
  std::int32_t symbol = 0;
  DEIMG_RETURN_IF_FAILED(DecodeSymbol(firstValueTree_.nodes, symbol));
  DEIMG_RETURN_IF_FAILED(ExtendDifference(symbol, block[0]));
  for (std::uint32_t k = 0; k < kLastEntry;) {
    DEIMG_RETURN_IF_FAILED(DecodeSymbol(runSizeTree_.nodes, symbol));
    if (symbol == kEndOfBlock) return DEIMG_OK;
    std::int16_t difference = 0;
    DEIMG_RETURN_IF_FAILED(ExtendDifference(symbol & 15, difference));
    k += static_cast<std::uint32_t>(symbol >> 4) + 1;
    if (k > kLastEntry) return DEIMG_BAD_DATA;
    block[k] = difference;
  }
  return DEIMG_OK;
}

Result CodedDataReader::DecodeSymbol(std::span<const CodeTreeNode> tree, std::int32_t& symbol) {
  const CodeTreeNode* node = &tree[0];
  while (node->value == CodeTreeNode::kInner) {
    if (ended_) return DEIMG_BAD_DATA;
    const std::uint32_t bit = buffer_[nextBit_ / 8] >> (7 - nextBit_ % 8) & 1u;
    if (node->child[bit] == 0) return DEIMG_BAD_DATA;
    DEIMG_RETURN_IF_FAILED(AdvanceBit());
    node = &tree[node->child[bit]];
  }
  symbol = node->value;
  return DEIMG_OK;
}

/// A difference of `size` bits: the first tells the sign, the rest count up from the smallest
/// magnitude of that size (positive) or from the largest (negative).
Result CodedDataReader::ExtendDifference(int size, std::int16_t& difference) {
  difference = 0;
  if (size == 0) return DEIMG_OK;
  std::uint32_t value = 0;
  std::uint32_t sign = 0;
  DEIMG_RETURN_IF_FAILED(TakeBit(sign));
  for (int i = 1; i < size; ++i) {
    std::uint32_t bit = 0;
    DEIMG_RETURN_IF_FAILED(TakeBit(bit));
    value = value << 1 | bit;
  }
  const std::int32_t base = sign != 0 ? 1 << (size - 1) : 1 - (1 << size);
  difference = static_cast<std::int16_t>(base + static_cast<std::int32_t>(value));
  return DEIMG_OK;
}

Result CodedDataReader::TakeBit(std::uint32_t& bit) {
  if (ended_) return DEIMG_BAD_DATA;
  bit = buffer_[nextBit_ / 8] >> (7 - nextBit_ % 8) & 1u;
  return AdvanceBit();
}

Result CodedDataReader::AdvanceBit() {
  ++nextBit_;
  while (nextBit_ == endBit_ && !ended_) DEIMG_RETURN_IF_FAILED(Refill());
  return DEIMG_OK;
}

Result CodedDataReader::Refill() {
  std::uint32_t delivered = 0;
  DEIMG_RETURN_IF_FAILED(Read(source_, buffer_.get(), kBufferBytes, delivered));
  if (delivered == 0) {
    ended_ = true;
  } else {
    RemoveStuffing(skipFirst_ ? 1 : 0, delivered);
  }
  return DEIMG_OK;
}

/// Moves the bytes from `first` to `end` to the buffer's start, leaving the stuffed ones out.
void CodedDataReader::RemoveStuffing(std::uint32_t first, std::uint32_t end) {
  std::uint8_t* const bytes = buffer_.get();
  std::uint32_t kept = 0;
  skipFirst_ = false;
  while (first < end) {
    const void* const marker = std::memchr(bytes + first, 0xFF, end - first);
    const std::uint32_t stop =
        marker == nullptr
            ? end
            : static_cast<std::uint32_t>(static_cast<const std::uint8_t*>(marker) - bytes) + 1;
    if (kept != first) std::memmove(bytes + kept, bytes + first, stop - first);
    kept += stop - first;
    skipFirst_ = marker != nullptr && stop == end;
    first = marker == nullptr ? stop : stop + 1;
  }
  nextBit_ = 0;
  endBit_ = 8 * kept;
}

}  // namespace deimg

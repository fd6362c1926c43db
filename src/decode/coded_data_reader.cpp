#include "decode/coded_data_reader.h"

#include <cstring>

#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr int kNoEndSymbol = -1;
constexpr int kEndOfBlock = 0;
constexpr std::uint32_t kLastEntry = 63;

/// Bytes behind the buffer that may be loaded together with its last ones.
constexpr std::uint32_t kSlackBytes = 16;

/// No block takes more bits than this, and loading them touches no byte beyond.
constexpr std::uint32_t kMostBlockBits = 64 * DifferenceTable::kMostBits + 8 * kSlackBytes;

/// Spelled out: compilers recognise this as one load and a byte swap, but not a loop.
std::uint64_t LoadBigEndian64(const std::uint8_t* p) {
  return std::uint64_t{p[0]} << 56 | std::uint64_t{p[1]} << 48 | std::uint64_t{p[2]} << 40 |
         std::uint64_t{p[3]} << 32 | std::uint64_t{p[4]} << 24 | std::uint64_t{p[5]} << 16 |
         std::uint64_t{p[6]} << 8 | std::uint64_t{p[7]};
}

/// The next bits of a byte sequence, most significant first: at least 49 of them at first, 56 after
/// a refill.
class BitWindow {
 public:
  BitWindow(const std::uint8_t* bytes, std::uint32_t position)
      : bytes_(bytes),
        next_(bytes + position / 8),
        bits_(LoadBigEndian64(next_) << position % 8),
        count_(56 - position % 8) {
    next_ += 7;
  }

  std::uint64_t bits() const { return bits_; }
  void Use(std::uint32_t count) {
    bits_ <<= count;
    count_ -= count;
  }
  /// Fills up with whole bytes. The bits below the counted ones are already those that follow.
  void Refill() {
    bits_ |= LoadBigEndian64(next_) >> count_;
    next_ += (63 - count_) / 8;
    count_ |= 56;
  }
  std::uint32_t position() const { return static_cast<std::uint32_t>(next_ - bytes_) * 8 - count_; }

 private:
  const std::uint8_t* const bytes_;
  const std::uint8_t* next_;
  std::uint64_t bits_;
  std::uint32_t count_;  // below 64
};
static_assert(DifferenceTable::kMostBits <= 49, "a first value before any refill");
static_assert(2 * DifferenceTable::kMostBits <= 56, "two symbols to a refill");

/// Stores a symbol's difference behind position k, and often the next one's too. False, and nothing
/// is used, when that could reach the block's end.
inline bool StoreSymbols(const DifferenceTable& table, BitWindow& window, DifferenceBlock& block,
                         std::uint32_t& k) {
  NextSymbol second;
  const CodedSize first = table.Decode(window.bits(), second);
  const std::uint32_t position = k + first.advance();
  const std::uint32_t last = position + second.advance();
  if (last >= kLastEntry) return false;
  // Without a second symbol both positions are the same, and the first difference stays.
  block[last] = second.difference();
  block[position] = static_cast<std::int16_t>(first.DifferenceBehind(window.bits()));
  window.Use(second.bits());
  k = last;
  return true;
}

}  // namespace

CodedDataReader::CodedDataReader(CallerStream& source, const CodeSet& codes)
    : source_(source),
      firstValues_(codes.firstValue.counts, codes.firstValue.symbols, kNoEndSymbol),
      runSizes_(codes.runSize.counts, codes.runSize.symbols, kEndOfBlock),
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

Result CodedDataReader::DecodeBlock(DifferenceBlock& block) {
  block = {};
  if (endBit_ - nextBit_ >= kMostBlockBits && DecodeInsideBuffer(block)) return DEIMG_OK;
  block = {};
  return DecodeBitByBit(block);
}

/// Decodes a block that cannot reach the buffer's end; false when it is not in order.
bool CodedDataReader::DecodeInsideBuffer(DifferenceBlock& block) {
  BitWindow window(buffer_.get(), nextBit_);
  const CodedSize first = firstValues_.Decode(window.bits());
  if (first.bits() == 0) return false;
  block[0] = static_cast<std::int16_t>(first.DifferenceBehind(window.bits()));
  window.Use(first.bits());
  window.Refill();
  std::uint32_t k = 0;
  while (StoreSymbols(runSizes_, window, block, k) && StoreSymbols(runSizes_, window, block, k)) {
    window.Refill();
  }
  // Near the block's end symbol by symbol, as the block may end between two.
  for (;;) {
    window.Refill();
    for (int i = 0; i < 2; ++i) {
      const CodedSize coded = runSizes_.Decode(window.bits());
      const auto difference = static_cast<std::int16_t>(coded.DifferenceBehind(window.bits()));
      window.Use(coded.bits());
      k += coded.advance();
      if (k >= kLastEntry) {
        if (k != kLastEntry && k < CodedSize::kEndOfBlock) return false;
        if (k == kLastEntry) block[k] = difference;
        nextBit_ = window.position();
        return true;
      }
      block[k] = difference;
    }
  }
}

Result CodedDataReader::DecodeBitByBit(DifferenceBlock& block) {
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

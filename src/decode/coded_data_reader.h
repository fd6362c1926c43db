/// The bit stream of the coded sensor data.
#ifndef DEIMG_DECODE_CODED_DATA_READER_H
#define DEIMG_DECODE_CODED_DATA_READER_H

#include <array>
#include <cstdint>

#include "base/result.h"
#include "decode/bit_window.h"
#include "decode/code_sets.h"
#include "decode/code_tree.h"
#include "decode/difference_table.h"
#include "decode/symbol_table.h"
#include "storage/mem_block.h"

namespace deimg {

/// A block codes 64 differences: the first value and the 63 run/size-coded ones. Whoever sums them
/// up does so modulo 2^16 like the samples.
inline constexpr std::uint32_t kBlockSamples = 64;

/// The differences of some blocks, one block after the other.
class DifferenceBlocks {
 public:
  static constexpr std::uint32_t kMost = 10;

  std::int16_t* block(std::uint32_t i) { return values_.data() + std::size_t{i} * kBlockSamples; }
  void Clear() { values_.fill(0); }

 private:
  // Entries that lie beyond a block's end are stored right behind it, where the next one begins.
  std::array<std::int16_t, std::size_t{kMost} * kBlockSamples + 1> values_;
};

/// Hands out the bits of a stream of coded bytes, most significant first, and decodes blocks of
/// differences from them. A byte 0xFF is followed by a stuffed byte, which is skipped whatever its
/// value. Bytes come through one 64 KiB buffer, refilled as soon as its last byte is used up.
///
/// Blocks that end inside the buffer are decoded many bits at a time. The block that reaches its
/// end, and blocks in which anything is wrong, go bit by bit, so that refills and failures happen
/// where they have to.
///
/// Results: 2 when the bits do not fit the code or the input ends while one is needed, or the error
/// word of the source's Read.
class CodedDataReader {
 public:
  static constexpr std::uint32_t kBufferBytes = 65536;

  CodedDataReader(CallerStream& source, const CodeSet& codes);

  /// Allocates the buffer: false when memory is short.
  [[nodiscard]] bool AllocateBuffer();

  /// Fills the buffer from the source's position and starts at byte `skip` of it. A first stretch
  /// shorter than the buffer, or a start outside it, is refused with 2.
  [[nodiscard]] Result Begin(std::uint64_t skip);

  /// Decodes the next `count` blocks, no more than there is room for. After a failure their entries
  /// mean nothing.
  [[nodiscard]] Result Decode(std::uint32_t count, DifferenceBlocks& blocks);

 private:
  [[nodiscard]] bool DecodeBlock(BitWindow& window, std::int16_t* block) const;
  [[nodiscard]] Result DecodeBitByBit(std::int16_t* block);
  [[nodiscard]] Result DecodeSymbol(std::span<const CodeTreeNode> tree, std::int32_t& symbol);
  [[nodiscard]] Result ExtendDifference(int size, std::int16_t& difference);
  [[nodiscard]] Result TakeBit(std::uint32_t& bit);
  [[nodiscard]] Result AdvanceBit();
  [[nodiscard]] Result Refill();
  void RemoveStuffing(std::uint32_t first, std::uint32_t end);

  CallerStream& source_;
  BlockOf<std::uint8_t> buffer_;  // its bytes without the stuffed ones
  std::uint32_t nextBit_ = 0;
  std::uint32_t endBit_ = 0;
  bool skipFirst_ = false;  // the next stretch starts with a stuffed byte
  bool ended_ = false;
  DifferenceTable firstValues_;
  DifferenceTable runSizes_;
  SymbolTable symbols_;
  FirstValueTree firstValueTree_;
  RunSizeTree runSizeTree_;
};

}  // namespace deimg

#endif  // DEIMG_DECODE_CODED_DATA_READER_H

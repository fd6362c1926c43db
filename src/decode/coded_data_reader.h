/// The bit stream of the coded sensor data.
#ifndef DEIMG_DECODE_CODED_DATA_READER_H
#define DEIMG_DECODE_CODED_DATA_READER_H

#include <array>
#include <cstdint>

#include "base/result.h"
#include "decode/code_sets.h"
#include "decode/code_tree.h"
#include "decode/difference_table.h"
#include "storage/mem_block.h"

namespace deimg {

/// 64 differences: the first value and the 63 run/size-coded ones. Whoever sums them up does so
/// modulo 2^16 like the samples.
using DifferenceBlock = std::array<std::int16_t, 64>;

/// Hands out the bits of a stream of coded bytes, most significant first, and decodes blocks of
/// differences from them. A byte 0xFF is followed by a stuffed byte, which is skipped whatever its
/// value. Bytes come through one 64 KiB buffer, refilled as soon as its last byte is used up.
///
/// Blocks that lie well inside the buffer are decoded many bits at a time. Blocks near its end, and
/// blocks in which anything is wrong, go bit by bit, so that refills and failures happen where they
/// have to.
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

  /// Decodes the next block. After a failure its entries mean nothing.
  [[nodiscard]] Result DecodeBlock(DifferenceBlock& block);

 private:
  [[nodiscard]] bool DecodeInsideBuffer(DifferenceBlock& block);
  [[nodiscard]] Result DecodeBitByBit(DifferenceBlock& block);
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
  FirstValueTree firstValueTree_;
  RunSizeTree runSizeTree_;
};

}  // namespace deimg

#endif  // DEIMG_DECODE_CODED_DATA_READER_H

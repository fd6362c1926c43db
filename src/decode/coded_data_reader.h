/// The bit stream of the coded sensor data.
#ifndef DEIMG_DECODE_CODED_DATA_READER_H
#define DEIMG_DECODE_CODED_DATA_READER_H

#include <array>
#include <cstdint>

#include "api/result.h"
#include "decode/code_sets.h"
#include "decode/code_tree.h"
#include "storage/mem_block.h"

namespace deimg {

/// 64 differences: the first value and the 63 run/size-coded ones.
using DifferenceBlock = std::array<std::int32_t, 64>;

/// Hands out the bits of a stream of coded bytes, most significant first, and decodes blocks of
/// differences from them. A byte 0xFF is followed by a stuffed byte, which is skipped whatever its
/// value. Bytes come through one 64 KiB buffer, refilled as soon as its last byte is used up.
///
/// Results: 2 when the bits do not fit the code or the input ends while one is needed, or the error
/// word of the source's Read.
class CodedDataReader {
 public:
  static constexpr std::uint32_t kBufferBytes = 65536;

  CodedDataReader(CallerStream& source, const CodeSet& codes)
      : source_(source), firstValueTree_(codes.firstValue), runSizeTree_(codes.runSize) {}

  /// Allocates the buffer: false when memory is short.
  [[nodiscard]] bool AllocateBuffer();

  /// Fills the buffer from the source's position and starts at byte `skip` of it. A first stretch
  /// shorter than the buffer, or a start outside it, is refused with 2.
  [[nodiscard]] Result Begin(std::uint64_t skip);

  /// Decodes the next block; entries that are not coded are left as they are.
  [[nodiscard]] Result DecodeBlock(DifferenceBlock& block);

 private:
  [[nodiscard]] Result DecodeFirstValue(DifferenceBlock& block);
  [[nodiscard]] Result DecodeRunSizeValues(DifferenceBlock& block);
  [[nodiscard]] Result DecodeSymbol(std::span<const CodeTreeNode> tree, std::int32_t& symbol);
  [[nodiscard]] Result ExtendDifference(int size, std::int32_t& difference);
  [[nodiscard]] Result TakeBit(std::uint32_t& bit);
  [[nodiscard]] Result AdvanceBit();
  [[nodiscard]] Result Refill();

  CallerStream& source_;
  BlockOf<std::uint8_t> buffer_;
  std::uint32_t readPos_ = 0;
  std::uint32_t bufferEnd_ = 0;
  int bitPos_ = 0;  // bits of the current byte already used
  bool ended_ = false;
  FirstValueTree firstValueTree_;
  RunSizeTree runSizeTree_;
};

}  // namespace deimg

#endif  // DEIMG_DECODE_CODED_DATA_READER_H

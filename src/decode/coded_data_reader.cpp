#include "decode/coded_data_reader.h"

#include "storage/stream_calls.h"

namespace deimg {

bool CodedDataReader::AllocateBuffer() {
  buffer_ = BlockOf<std::uint8_t>::Uninitialised(kBufferBytes);
  return static_cast<bool>(buffer_);
}

Result CodedDataReader::Begin(std::uint64_t skip) {
  DEIMG_RETURN_IF_FAILED(Read(source_, buffer_.get(), kBufferBytes, bufferEnd_));
  if (bufferEnd_ < kBufferBytes || skip >= bufferEnd_) return DEIMG_BAD_DATA;
  readPos_ = static_cast<std::uint32_t>(skip);
  bitPos_ = 0;
  ended_ = false;
  return DEIMG_OK;
}

Result CodedDataReader::DecodeBlock(DifferenceBlock& block) {
  DEIMG_RETURN_IF_FAILED(DecodeFirstValue(block));
  return DecodeRunSizeValues(block);
}

Result CodedDataReader::DecodeFirstValue(DifferenceBlock& block) {
  std::int32_t size = 0;
  DEIMG_RETURN_IF_FAILED(DecodeSymbol(firstValueTree_.nodes, size));
  return ExtendDifference(size, block[0]);
}

Result CodedDataReader::DecodeRunSizeValues(DifferenceBlock& block) {
  std::size_t k = 0;
  while (k < 63) {
    std::int32_t symbol = 0;
    DEIMG_RETURN_IF_FAILED(DecodeSymbol(runSizeTree_.nodes, symbol));
    if (symbol == 0) return DEIMG_OK;
    std::int32_t difference = 0;
    DEIMG_RETURN_IF_FAILED(ExtendDifference(symbol & 15, difference));
    k += static_cast<std::size_t>(symbol >> 4) + 1;
    if (k > 63) return DEIMG_BAD_DATA;
    block[k] = difference;
  }
  return DEIMG_OK;
}

Result CodedDataReader::DecodeSymbol(std::span<const CodeTreeNode> tree, std::int32_t& symbol) {
  const CodeTreeNode* node = &tree[0];
  while (node->value == CodeTreeNode::kInner) {
    if (ended_) return DEIMG_BAD_DATA;
    const std::uint32_t bit = buffer_[readPos_] >> (7 - bitPos_) & 1u;
    if (node->child[bit] == 0) return DEIMG_BAD_DATA;
    DEIMG_RETURN_IF_FAILED(AdvanceBit());
    node = &tree[node->child[bit]];
  }
  symbol = node->value;
  return DEIMG_OK;
}

/// A difference of `size` bits: the first tells the sign, the rest count up from the smallest
/// magnitude of that size (positive) or from the largest (negative).
Result CodedDataReader::ExtendDifference(int size, std::int32_t& difference) {
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
  difference = base + static_cast<std::int32_t>(value);
  return DEIMG_OK;
}

Result CodedDataReader::TakeBit(std::uint32_t& bit) {
  if (ended_) return DEIMG_BAD_DATA;
  bit = buffer_[readPos_] >> (7 - bitPos_) & 1u;
  return AdvanceBit();
}

Result CodedDataReader::AdvanceBit() {
  if (++bitPos_ <= 7) return DEIMG_OK;
  bitPos_ = 0;
  readPos_ += buffer_[readPos_] == 0xFF ? 2 : 1;
  while (readPos_ >= bufferEnd_) {
    readPos_ -= bufferEnd_;
    DEIMG_RETURN_IF_FAILED(Refill());
    if (ended_) return DEIMG_OK;
  }
  return DEIMG_OK;
}

Result CodedDataReader::Refill() {
  std::uint32_t delivered = 0;
  DEIMG_RETURN_IF_FAILED(Read(source_, buffer_.get(), kBufferBytes, delivered));
  if (delivered == 0) {
    ended_ = true;
  } else {
    bufferEnd_ = delivered;
  }
  return DEIMG_OK;
}

}  // namespace deimg

#include "decode/difference_table.h"

#include <algorithm>
#include <cstddef>

namespace deimg {

DifferenceTable::DifferenceTable(std::span<const std::uint8_t, 16> counts,
                                 std::span<const std::uint8_t> symbols, int endSymbol)
    : symbols_(symbols), endSymbol_(endSymbol) {
  std::uint32_t code = 0;
  std::size_t next = 0;
  for (std::uint32_t length = 1; length <= 16; ++length, code <<= 1) {
    offset_[length] = static_cast<std::int32_t>(next) - static_cast<std::int32_t>(code);
    for (int i = 0; i < counts[length - 1]; ++i, ++code, ++next) {
      if (length > kIndexBits) continue;
      const std::uint32_t rest = kIndexBits - length;
      std::fill_n(entries_.begin() + (code << rest), 1u << rest,
                  Entry{SizeOf(length, symbols[next]), {}});
    }
    limit_[length] = code;
  }
  for (std::uint32_t i = 0; i < entries_.size(); ++i) entries_[i].second = SecondOf(i);
}

/// The index's bits as those of the stream; none of the rest may matter.
NextSymbol DifferenceTable::SecondOf(std::uint32_t index) const {
  const CodedSize first = entries_[index].first;
  const NextSymbol none(first.bits());
  if (first.bits() >= kIndexBits || first.advance() >= CodedSize::kNoCode) return none;
  const std::uint64_t rest = std::uint64_t{index} << (64 - kIndexBits) << first.bits();
  const CodedSize second = entries_[static_cast<std::size_t>(rest >> (64 - kIndexBits))].first;
  const std::uint32_t bits = first.bits() + second.bits();
  if (!second.isCode() || bits > kIndexBits || second.advance() >= CodedSize::kNoCode) return none;
  return {bits, second.advance(), second.DifferenceBehind(rest)};
}

CodedSize DifferenceTable::SizeOf(std::uint32_t length, std::uint32_t symbol) const {
  const bool ends = static_cast<int>(symbol) == endSymbol_;
  return {length, symbol & 15, ends ? CodedSize::kEndOfBlock : (symbol >> 4) + 1};
}

CodedSize DifferenceTable::Search(std::uint64_t next) const {
  for (std::uint32_t length = kIndexBits + 1; length <= 16; ++length) {
    const auto code = static_cast<std::int32_t>(next >> (64 - length));
    if (static_cast<std::uint32_t>(code) >= limit_[length]) continue;
    return SizeOf(length, symbols_[static_cast<std::uint32_t>(code + offset_[length])]);
  }
  return {0, 0, CodedSize::kNoCode};
}

}  // namespace deimg

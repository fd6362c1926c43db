#include "decode/difference_table.h"

#include <algorithm>
#include <cstddef>

namespace deimg {

DifferenceTable::DifferenceTable(std::span<const std::uint8_t, 16> counts,
                                 std::span<const std::uint8_t> symbols, int endSymbol) {
  long_.fill(kNone);
  std::uint32_t code = 0;  // and what stands behind it in sixteen bits
  std::size_t next = 0;
  for (std::uint32_t length = 1; length <= 16; ++length) {
    const std::uint32_t codes = 1u << (16 - length);
    if (length == kIndexBits + 1) firstLong_ = code;
    for (int i = 0; i < counts[length - 1]; ++i, ++next, code += codes) {
      const std::uint32_t symbol = symbols[next];
      const bool ends = static_cast<int>(symbol) == endSymbol;
      const CodedSize size(length, symbol & 15, ends ? CodedSize::kEndOfBlock : (symbol >> 4) + 1);
      if (length <= kIndexBits) {
        std::fill_n(&entries_[code >> (16 - kIndexBits)], codes >> (16 - kIndexBits), size);
      } else {
        std::fill_n(&long_[code - firstLong_], codes, size);
      }
    }
  }
}

}  // namespace deimg

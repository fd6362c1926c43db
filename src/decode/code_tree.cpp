#include "decode/code_tree.h"

namespace deimg {

void BuildCodeTree(std::span<const std::uint8_t, 16> counts, std::span<const std::uint8_t> symbols,
                   std::span<CodeTreeNode> pool) {
  std::size_t used = 1;
  std::size_t next = 0;
  std::uint32_t code = 0;
  for (int length = 1; length <= 16; ++length, code <<= 1) {
    for (int i = 0; i < counts[static_cast<std::size_t>(length - 1)]; ++i, ++code, ++next) {
      std::size_t node = 0;
      for (int bit = length - 1; bit >= 0; --bit) {
        std::uint16_t& child = pool[node].child[code >> bit & 1];
        if (child == 0) child = static_cast<std::uint16_t>(used++);
        node = child;
      }
      pool[node].value = symbols[next];
    }
  }
}

}  // namespace deimg

/// Decoding trees for the prefix codes of the sensor data.
#ifndef DEIMG_DECODE_CODE_TREE_H
#define DEIMG_DECODE_CODE_TREE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace deimg {

/// A node of a tree; the root is node 0, and as no node has the root for a child, a child index of
/// 0 means that there is none.
struct CodeTreeNode {
  static constexpr std::int32_t kInner = 255;

  std::array<std::uint16_t, 2> child{};  // by bit
  std::int32_t value = kInner;           // a leaf's symbol
};

/// Enters the codes of a definition into a cleared pool of nodes, root first. Codes of one length
/// count upwards in symbol order; every longer code starts after them.
void BuildCodeTree(std::span<const std::uint8_t, 16> counts, std::span<const std::uint8_t> symbols,
                   std::span<CodeTreeNode> pool);

/// A tree in a pool of its own.
template <std::size_t poolSize>
struct CodeTree {
  template <typename Definition>
  explicit CodeTree(const Definition& definition) {
    BuildCodeTree(definition.counts, definition.symbols, nodes);
  }

  std::array<CodeTreeNode, poolSize> nodes;
};

using FirstValueTree = CodeTree<512>;
using RunSizeTree = CodeTree<2560>;

}  // namespace deimg

#endif  // DEIMG_DECODE_CODE_TREE_H

/// Many bits at a time: a code and the size of the difference behind it in one look-up.
#ifndef DEIMG_DECODE_DIFFERENCE_TABLE_H
#define DEIMG_DECODE_DIFFERENCE_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace deimg {

/// What the next bits of the stream are, in one word.
class CodedSize {
 public:
  /// Advances that say more than a distance: larger than any sum of distances in a block.
  static constexpr std::uint32_t kNoCode = 100;
  static constexpr std::uint32_t kEndOfBlock = 200;

  constexpr CodedSize() = default;
  constexpr CodedSize(std::uint32_t codeBits, std::uint32_t differenceBits, std::uint32_t advance)
      : word_((codeBits + differenceBits) | codeBits << 8 | advance << 16) {}

  /// Of code and difference together; 0 when the bits are no code.
  std::uint32_t bits() const { return word_ & 0xFF; }
  std::uint32_t codeBits() const { return word_ >> 8 & 0xFF; }
  std::uint32_t differenceBits() const { return bits() - codeBits(); }
  /// Positions to move on by, or one of the constants.
  std::uint32_t advance() const { return word_ >> 16; }

 private:
  std::uint32_t word_ = 0;
};

/// Looks a code up by the next twelve bits; the few longer codes are searched by length. Symbols
/// are read as run (high four bits) and size of the difference (low four bits). The table takes 12
/// KB and stays in the first-level cache.
class DifferenceTable {
 public:
  /// The longest code and the largest difference of the built-in sets.
  static constexpr std::uint32_t kMostBits = 16 + 11;

  /// `endSymbol` is the symbol without a difference that ends a block, or -1.
  DifferenceTable(std::span<const std::uint8_t, 16> counts, std::span<const std::uint8_t> symbols,
                  int endSymbol);

  /// `next` holds the stream's next bits from the top down.
  CodedSize Decode(std::uint64_t next) const {
    const CodedSize size = entries_[static_cast<std::size_t>(next >> (64 - kIndexBits))];
    return size.bits() != 0 ? size : Search(next);
  }

 private:
  static constexpr std::uint32_t kIndexBits = 12;

  CodedSize Search(std::uint64_t next) const;
  CodedSize SizeOf(std::uint32_t length, std::uint32_t symbol) const;

  std::array<CodedSize, 1u << kIndexBits> entries_{};
  // By length: the first code beyond those of this length, and the index of the length's first
  // symbol less its first code.
  std::array<std::uint32_t, 17> limit_{};
  std::array<std::int32_t, 17> offset_{};
  std::span<const std::uint8_t> symbols_;
  int endSymbol_;
};

/// The difference that follows a code: its first bit tells the sign, the rest count up from the
/// smallest magnitude of that size (positive) or from the largest (negative). No branches: size 0
/// gives 0.
inline std::int32_t DifferenceBehind(std::uint64_t next, CodedSize coded) {
  const std::uint32_t size = coded.differenceBits();
  const std::uint64_t bits = next << coded.codeBits();
  const auto value = static_cast<std::int32_t>(bits >> 1 >> (63 - size));
  const auto negative = static_cast<std::int32_t>(bits >> 63) - 1;  // -1 or 0
  return value - (negative & ((1 << size) - 1));
}

}  // namespace deimg

#endif  // DEIMG_DECODE_DIFFERENCE_TABLE_H

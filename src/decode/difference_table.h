/// Many bits at a time: a code and the size of the difference behind it in one look-up.
#ifndef DEIMG_DECODE_DIFFERENCE_TABLE_H
#define DEIMG_DECODE_DIFFERENCE_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace deimg {

/// What the next bits of the stream are, in one word: every field in the low six bits of a byte, so
/// that a shift by the field needs no masking.
class CodedSize {
 public:
  /// Advances that say more than a distance: larger than any sum of distances in a block.
  static constexpr std::uint32_t kNoCode = 100;
  static constexpr std::uint32_t kEndOfBlock = 200;

  constexpr CodedSize() = default;
  constexpr CodedSize(std::uint32_t codeBits, std::uint32_t differenceBits, std::uint32_t advance)
      : word_((codeBits + differenceBits) | codeBits << 8 | (63 - differenceBits) << 16 |
              advance << 24) {}

  /// Of code and difference together; 0 when the bits are no code.
  std::uint32_t bits() const { return word_ & 63; }
  bool isCode() const { return word_ != 0; }
  /// The difference that follows the code: its first bit tells the sign, the rest count up from the
  /// smallest magnitude of that size (positive) or from the largest (negative). No branches: no
  /// bits give 0. `next` holds the stream's next bits from the top down.
  std::int32_t DifferenceBehind(std::uint64_t next) const {
    const std::uint64_t bits = next << (word_ >> 8 & 63);
    // A negative difference is the complement of its magnitude.
    const std::uint64_t negative = (bits >> 63) - 1;  // all ones, or 0
    const std::uint64_t magnitude = (bits ^ negative) >> 1 >> (word_ >> 16 & 63);
    return static_cast<std::int32_t>((magnitude ^ negative) - negative);
  }
  /// Positions to move on by, or one of the constants.
  std::uint32_t advance() const { return word_ >> 24; }

 private:
  std::uint32_t word_ = 0;
};

/// What follows a symbol: another one, if its code and its difference lie within the bits that were
/// looked up, or nothing.
class NextSymbol {
 public:
  constexpr NextSymbol() = default;
  /// No other symbol behind one of so many bits.
  constexpr explicit NextSymbol(std::uint32_t bits) : word_(bits) {}
  /// A symbol that makes it so many bits together.
  constexpr NextSymbol(std::uint32_t bits, std::uint32_t advance, std::int32_t difference)
      : word_(bits | advance << 8 | static_cast<std::uint32_t>(difference) << 16) {}

  /// Of both symbols.
  std::uint32_t bits() const { return word_ & 63; }
  /// Positions to move on by: 0 when there is no other symbol.
  std::uint32_t advance() const { return word_ >> 8 & 0xFF; }
  std::int16_t difference() const { return static_cast<std::int16_t>(word_ >> 16); }

 private:
  std::uint32_t word_ = 0;
};

/// Looks a code up by the next eleven bits; the few longer codes are searched by length. Symbols
/// are read as run (high four bits) and size of the difference (low four bits). A third of the
/// look-ups of the built-in sets resolve the next symbol too. The table takes 16 KB: with twelve
/// bits it would find more pairs, but lose more time in the first-level cache.
class DifferenceTable {
 public:
  /// The longest code and the largest difference of the built-in sets.
  static constexpr std::uint32_t kMostBits = 16 + 11;

  /// `endSymbol` is the symbol without a difference that ends a block, or -1.
  DifferenceTable(std::span<const std::uint8_t, 16> counts, std::span<const std::uint8_t> symbols,
                  int endSymbol);

  /// `next` holds the stream's next bits from the top down.
  CodedSize Decode(std::uint64_t next) const {
    const CodedSize size = entries_[static_cast<std::size_t>(next >> (64 - kIndexBits))].first;
    return size.isCode() ? size : Search(next);
  }

  /// The first symbol, and in `second` what follows it.
  CodedSize Decode(std::uint64_t next, NextSymbol& second) const {
    const Entry& entry = entries_[static_cast<std::size_t>(next >> (64 - kIndexBits))];
    second = entry.second;
    if (entry.first.isCode()) return entry.first;
    const CodedSize found = Search(next);
    second = NextSymbol(found.bits());
    return found;
  }

 private:
  static constexpr std::uint32_t kIndexBits = 11;

  CodedSize Search(std::uint64_t next) const;
  CodedSize SizeOf(std::uint32_t length, std::uint32_t symbol) const;
  NextSymbol SecondOf(std::uint32_t index) const;

  struct Entry {
    CodedSize first;
    NextSymbol second;
  };
  std::array<Entry, 1u << kIndexBits> entries_{};
  // By length: the first code beyond those of this length, and the index of the length's first
  // symbol less its first code.
  std::array<std::uint32_t, 17> limit_{};
  std::array<std::int32_t, 17> offset_{};
  std::span<const std::uint8_t> symbols_;
  int endSymbol_;
};

}  // namespace deimg

#endif  // DEIMG_DECODE_DIFFERENCE_TABLE_H

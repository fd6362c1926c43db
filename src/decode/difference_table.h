/// Many bits at a time: a code and the size of the difference behind it in one look-up.
#ifndef DEIMG_DECODE_DIFFERENCE_TABLE_H
#define DEIMG_DECODE_DIFFERENCE_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace deimg {

/// What the next bits of the stream are: a byte a field, so that each is loaded where it is needed.
class CodedSize {
 public:
  /// Advances that say more than a distance: larger than any sum of distances in a look-up.
  static constexpr std::uint32_t kEndOfBlock = 64;
  static constexpr std::uint32_t kNoCode = 255;

  constexpr CodedSize() = default;
  constexpr CodedSize(std::uint32_t codeBits, std::uint32_t differenceBits, std::uint32_t advance)
      : bits_(static_cast<std::uint8_t>(codeBits + differenceBits)),
        codeBits_(static_cast<std::uint8_t>(codeBits)),
        otherBits_(static_cast<std::uint8_t>(63 - differenceBits)),
        advance_(static_cast<std::uint8_t>(advance)) {}

  /// Of code and difference together; 0 when the bits are no code.
  std::uint32_t bits() const { return bits_; }
  std::uint32_t codeBits() const { return codeBits_; }
  /// The difference that follows the code: its first bit tells the sign, the rest count up from the
  /// smallest magnitude of that size (positive) or from the largest (negative). No branches: no
  /// bits give 0. `next` holds the stream's next bits from the top down.
  std::int16_t DifferenceBehind(std::uint64_t next) const {
    const std::uint64_t bits = next << codeBits_;
    const std::uint64_t negative = (bits >> 63) - 1;  // all ones, or 0
    return static_cast<std::int16_t>((bits >> 1 >> otherBits_) - (negative >> 1 >> otherBits_));
  }
  /// Positions to move on by, or one of the constants.
  std::uint32_t advance() const { return advance_; }

 private:
  std::uint8_t bits_ = 0;
  std::uint8_t codeBits_ = 0;
  std::uint8_t otherBits_ = 63;  // of 64 that are no part of the difference, but one
  std::uint8_t advance_ = 0;
};

/// Looks a code up by the next nine bits, and the few longer codes by sixteen: they are the last
/// ones in code order, so that a short table holds them all. Symbols are read as run (high four
/// bits) and size of the difference (low four bits).
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
    return size.bits() != 0 ? size : DecodeLong(next);
  }
  /// The same for a code that is known to be longer than nine bits.
  CodedSize DecodeLong(std::uint64_t next) const {
    const std::size_t index = static_cast<std::size_t>(next >> 48) - firstLong_;
    return index < long_.size() ? long_[index] : kNone;
  }

 private:
  static constexpr std::uint32_t kIndexBits = 9;
  static constexpr CodedSize kNone{0, 0, CodedSize::kNoCode};

  std::array<CodedSize, 1u << kIndexBits> entries_{};
  std::array<CodedSize, 512> long_{};
  std::uint32_t firstLong_ = 0x10000;  // sixteen bits that begin with the first longer code
};

}  // namespace deimg

#endif  // DEIMG_DECODE_DIFFERENCE_TABLE_H

/// Several symbols of a block in one look-up.
#ifndef DEIMG_DECODE_SYMBOL_TABLE_H
#define DEIMG_DECODE_SYMBOL_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "decode/difference_table.h"

namespace deimg {

/// One or two symbols whose codes lie within the bits looked up. The difference of the first of two
/// lies there too and is ready; the last one's is formed from the stream. Where there is only one,
/// the first stands where the last one does, so that storing both in order keeps the right one.
class CodedSymbols {
 public:
  constexpr CodedSymbols() = default;
  CodedSymbols(std::uint32_t firstBits, std::uint32_t firstAdvance, std::int16_t firstDifference,
               CodedSize last)
      : last_(last),
        firstBits_(static_cast<std::uint8_t>(firstBits)),
        firstAdvance_(static_cast<std::uint8_t>(firstAdvance)),
        firstDifference_(firstDifference) {}

  std::uint32_t firstBits() const { return firstBits_; }
  std::uint32_t firstAdvance() const { return firstAdvance_; }
  std::int16_t firstDifference() const { return firstDifference_; }
  /// The last symbol: its bits, code bits and advance count from where the first one begins.
  const CodedSize& last() const { return last_; }

  /// The bits up to the block's end, when these symbols reach it: an end of block, or a symbol
  /// `distance` positions on. 0 when they step over it.
  std::uint32_t BitsToEnd(std::uint32_t distance) const {
    const std::uint32_t advance = last().advance();
    const bool ends =
        advance >= CodedSize::kEndOfBlock && advance - CodedSize::kEndOfBlock < distance;
    return advance == distance || ends  ? last().bits()
           : firstAdvance() == distance ? firstBits()
                                        : 0;
  }

 private:
  CodedSize last_;
  std::uint8_t firstBits_ = 0;
  std::uint8_t firstAdvance_ = 0;
  std::int16_t firstDifference_ = 0;
};

/// Looks up the next eleven bits. Its 18 KB stay in the first-level cache beside a line or two;
/// twelve bits save as much time in symbols as they lose there.
class SymbolTable {
 public:
  static constexpr std::uint32_t kIndexBits = 11;
  /// A look-up's codes, and the difference behind the last one.
  static constexpr std::uint32_t kMostBits = kIndexBits + 11;

  explicit SymbolTable(const DifferenceTable& codes);

  /// The last advance is kNoCode where the first code is longer than the bits looked up (or there
  /// is none), and kEndOfBlock and the distance up to there where the block ends. `next` holds the
  /// stream's next bits from the top down.
  const CodedSymbols& Decode(std::uint64_t next) const {
    return entries_[static_cast<std::size_t>(next >> (64 - kIndexBits))];
  }
  /// The bits of all symbols found: what the next look-up waits for, so in a table of its own.
  std::uint32_t Bits(std::uint64_t next) const {
    return bits_[static_cast<std::size_t>(next >> (64 - kIndexBits))];
  }

 private:
  std::array<std::uint8_t, 1u << kIndexBits> bits_;
  std::array<CodedSymbols, 1u << kIndexBits> entries_;
};

}  // namespace deimg

#endif  // DEIMG_DECODE_SYMBOL_TABLE_H

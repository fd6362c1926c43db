#include "decode/symbol_table.h"

namespace deimg {
namespace {

/// The symbols at the start of `next`, of which only the bits looked up may count.
CodedSymbols SymbolsIn(const DifferenceTable& codes, std::uint64_t next) {
  constexpr std::uint32_t kKnown = SymbolTable::kIndexBits;
  const CodedSize first = codes.Decode(next);
  if (first.bits() == 0 || first.codeBits() > kKnown) {
    return {0, CodedSize::kNoCode, 0, CodedSize(0, 0, CodedSize::kNoCode)};
  }
  const CodedSymbols alone = {first.bits(), first.advance(), 0, first};
  if (first.bits() >= kKnown || first.advance() >= CodedSize::kEndOfBlock) return alone;
  const CodedSize second = codes.Decode(next << first.bits());
  if (second.bits() == 0 || first.bits() + second.codeBits() > kKnown) return alone;
  return {first.bits(), first.advance(), first.DifferenceBehind(next),
          CodedSize(first.bits() + second.codeBits(), second.bits() - second.codeBits(),
                    first.advance() + second.advance())};
}

}  // namespace

SymbolTable::SymbolTable(const DifferenceTable& codes) {
  for (std::size_t index = 0; index < entries_.size(); ++index) {
    entries_[index] = SymbolsIn(codes, std::uint64_t{index} << (64 - kIndexBits));
    bits_[index] = static_cast<std::uint8_t>(entries_[index].last().bits());
  }
}

}  // namespace deimg

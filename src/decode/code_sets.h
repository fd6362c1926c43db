/// The three built-in code sets of the sensor data.
#ifndef DEIMG_DECODE_CODE_SETS_H
#define DEIMG_DECODE_CODE_SETS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace deimg {

/// A prefix code: how many codes there are of each length, 1 to 16 bits, and the symbols in code
/// order. The counts add up to the number of symbols.
template <std::size_t symbolCount>
struct CodeDefinition {
  std::array<std::uint8_t, 16> counts;
  std::array<std::uint8_t, symbolCount> symbols;
};

/// First values of blocks: a symbol is a bit count, 0 to 11.
using FirstValueDefinition = CodeDefinition<12>;
/// Remaining values: run of skipped positions in the high four bits, bit count (0 to 10) in the low
/// four. The symbol 0 ends a block.
using RunSizeDefinition = CodeDefinition<162>;

struct CodeSet {
  FirstValueDefinition firstValue;
  RunSizeDefinition runSize;
};

/// The set a raw file selects: 0, 1, and the last one for every other index.
const CodeSet& ChooseCodeSet(std::uint32_t codeSetIndex);

}  // namespace deimg

#endif  // DEIMG_DECODE_CODE_SETS_H

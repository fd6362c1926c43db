/// The three prefix codes of the sensor data.
#ifndef DEIMG_RAWFILE_CODE_SETS_H
#define DEIMG_RAWFILE_CODE_SETS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace deimg::rawfile {

/// One code word; length 0: the code set has no word for the symbol.
struct CodeWord {
  uint16_t bits = 0;
  uint8_t length = 0;
};

/// Code words by symbol.
using CodeBook = std::array<CodeWord, 256>;

struct CodeSet {
  CodeBook firstValue;  ///< symbol: bit count of the first value of a block
  CodeBook runSize;     ///< symbol: run of zero entries * 16 + bit count; 0x00 ends the block
};

/// The code set a file selects with `index`: 0, 1, and for every other value set 2.
const CodeSet& CodeSetFor(uint32_t index);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_CODE_SETS_H

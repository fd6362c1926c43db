#include "plain_decoder.h"

#include "decode/code_sets.h"

namespace deimg::fuzz {
namespace {

/// Bits of a byte string, most significant first; the byte behind every 0xFF is left out.
class PlainBits {
 public:
  explicit PlainBits(const std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}

  /// The next bit, or -1 at the end.
  int Next() {
    if (byte_ >= bytes_.size()) return -1;
    const int bit = bytes_[byte_] >> (7 - used_) & 1;
    if (++used_ == 8) {
      byte_ += bytes_[byte_] == 0xFF ? 2u : 1u;
      used_ = 0;
    }
    return bit;
  }

 private:
  const std::vector<std::uint8_t>& bytes_;
  std::size_t byte_ = 0;
  int used_ = 0;
};

/// The next symbol of a canonical prefix code, or -1.
template <typename Definition>
int PlainSymbol(PlainBits& bits, const Definition& definition) {
  int code = 0;
  int first = 0;   // first code of this length
  int symbol = 0;  // its place in the symbol list
  for (int length = 1; length <= 16; ++length) {
    const int bit = bits.Next();
    if (bit < 0) return -1;
    code = code << 1 | bit;
    first <<= 1;
    const int count = definition.counts[static_cast<std::size_t>(length - 1)];
    if (code < first + count) {
      return definition.symbols[static_cast<std::size_t>(symbol + code - first)];
    }
    first += count;
    symbol += count;
  }
  return -1;
}

/// A difference of `size` bits; false at the end of the bits.
bool PlainDifference(PlainBits& bits, int size, int& difference) {
  int value = 0;
  for (int i = 0; i < size; ++i) {
    const int bit = bits.Next();
    if (bit < 0) return false;
    value = value << 1 | bit;
  }
  // A leading 0 stands for a negative difference.
  const bool negative = size > 0 && value < 1 << (size - 1);
  difference = negative ? value - ((1 << size) - 1) : value;
  return true;
}

}  // namespace

bool PlainDecode(const std::vector<std::uint8_t>& coded, std::uint8_t lowBits,
                 std::uint32_t codeSet, std::uint32_t width, std::uint32_t samples,
                 std::vector<std::uint16_t>& plane) {
  const CodeSet& codes = ChooseCodeSet(codeSet);
  PlainBits bits(coded);
  int carry = 0;
  int predictors[2] = {512, 512};
  for (std::uint32_t block = 0; block < samples / 64; ++block) {
    int differences[64] = {};
    const int firstSize = PlainSymbol(bits, codes.firstValue);
    if (firstSize < 0 || !PlainDifference(bits, firstSize, differences[0])) return false;
    for (int k = 0; k < 63;) {
      const int symbol = PlainSymbol(bits, codes.runSize);
      if (symbol == 0) break;
      int difference = 0;
      if (symbol < 0 || !PlainDifference(bits, symbol & 15, difference)) return false;
      k += (symbol >> 4) + 1;
      if (k > 63) return false;
      differences[k] = difference;
    }
    carry += differences[0];
    differences[0] = carry;
    for (std::uint32_t i = 0; i < 64; ++i) {
      int& predictor = predictors[i % 2];
      predictor += differences[i];
      const int low = lowBits >> 2 * (i % 4) & 3;
      plane.push_back(static_cast<std::uint16_t>(predictor << 2 | low));
      // Line ends are noticed after every four samples only.
      if (i % 4 == 3 && plane.size() % width == 0) predictors[0] = predictors[1] = 512;
    }
  }
  plane.resize(samples);
  return true;
}

}  // namespace deimg::fuzz

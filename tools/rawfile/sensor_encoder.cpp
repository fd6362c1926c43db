#include "rawfile/sensor_encoder.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "rawfile/code_sets.h"

namespace deimg::rawfile {
namespace {

constexpr size_t kBlockSize = 64;
constexpr int kLineStart = 512;  // both predictors at the start of a line
constexpr uint8_t kEndOfBlock = 0x00;
constexpr uint8_t kSixteenZeros = 0xF0;

/// Appends words most significant bit first, with a stuffed byte behind every 0xFF.
class BitWriter {
 public:
  BitWriter(Bytes& out, uint8_t stuffing) : out_(out), stuffing_(stuffing) {}

  /// `length` is at most 32.
  void Put(uint32_t bits, uint32_t length) {
    pending_ = (pending_ << length) | bits;
    count_ += length;
    while (count_ >= 8) {
      count_ -= 8;
      const auto byte = static_cast<uint8_t>(pending_ >> count_);
      out_.push_back(byte);
      if (byte == 0xFF) out_.push_back(stuffing_);
    }
  }
  void FillLastByte() {
    if (count_ != 0) Put(0, 8 - count_);
  }

 private:
  Bytes& out_;
  uint8_t stuffing_;
  uint64_t pending_ = 0;
  uint32_t count_ = 0;
};

class BlockEncoder {
 public:
  BlockEncoder(const CodeSet& codes, const CodingOptions& options, Bytes& out)
      : codes_(codes), runsToLastEntry_(options.runsToLastEntry), bits_(out, options.stuffing) {}

  void Encode(const std::array<int, kBlockSize>& differences) {
    PutDifference(codes_.firstValue, 0, differences[0] - carry_);
    carry_ = differences[0];

    size_t last = 0;  // the last entry written so far
    for (size_t k = 1; k < kBlockSize; ++k) {
      if (differences[k] == 0) continue;
      for (; k - last > 16; last += 16) PutWord(codes_.runSize, kSixteenZeros);
      PutDifference(codes_.runSize, static_cast<uint32_t>(k - last - 1) << 4, differences[k]);
      last = k;
    }
    if (runsToLastEntry_ && (kBlockSize - 1 - last) % 16 == 0) {
      for (; last < kBlockSize - 1; last += 16) PutWord(codes_.runSize, kSixteenZeros);
    }
    if (last < kBlockSize - 1) PutWord(codes_.runSize, kEndOfBlock);
  }
  void Finish() { bits_.FillLastByte(); }

 private:
  void PutWord(const CodeBook& book, uint32_t symbol) {
    const CodeWord word = book[symbol];
    if (word.length == 0) throw WriteError("a difference of neighbouring samples has no code word");
    bits_.Put(word.bits, word.length);
  }
  /// The word for `symbol` + size, then the difference in size bits; negative ones are stored
  /// as difference + 2^size - 1.
  void PutDifference(const CodeBook& book, uint32_t symbol, int difference) {
    const auto size =
        static_cast<uint32_t>(std::bit_width(static_cast<uint32_t>(std::abs(difference))));
    if (size > 15) throw WriteError("a difference of neighbouring samples has no code word");
    PutWord(book, symbol | size);
    bits_.Put(static_cast<uint32_t>(difference < 0 ? difference + (1 << size) - 1 : difference),
              size);
  }

  const CodeSet& codes_;
  bool runsToLastEntry_;
  BitWriter bits_;
  int carry_ = 0;
};

/// Four samples to a byte, the first in the lowest bits; a rest of fewer than four is left out.
void AppendLowBits(const Plane& plane, Bytes& out) {
  const std::vector<uint16_t>& s = plane.samples;
  for (size_t i = 0; i + 4 <= s.size(); i += 4) {
    out.push_back(static_cast<uint8_t>((s[i] & 3) | (s[i + 1] & 3) << 2 | (s[i + 2] & 3) << 4 |
                                       (s[i + 3] & 3) << 6));
  }
}

void Check(const Plane& plane, const DecoderSettings& settings) {
  if (plane.width == 0 || plane.width % 2 != 0 || plane.height == 0 || plane.width > 0xFFFF ||
      plane.height > 0xFFFF) {
    throw WriteError("a plane has an even width and at most 65,535 columns and lines");
  }
  const size_t count = size_t{plane.width} * plane.height;
  if (plane.samples.size() != count) throw WriteError("the plane does not hold width x height");
  const auto tail = plane.samples.end() - static_cast<std::ptrdiff_t>(count % kBlockSize);
  if (std::any_of(tail, plane.samples.end(), [](uint16_t s) { return s != 0; })) {
    throw WriteError("samples behind the last whole block of 64 cannot be stored");
  }
  if (uint64_t{settings.dataSkip1} + settings.dataSkip2 > 0xFFFF) {
    throw WriteError("more than 65,535 bytes to skip");
  }
}

}  // namespace

Bytes EncodeSensorData(const Plane& plane, const DecoderSettings& settings,
                       const CodingOptions& options) {
  Check(plane, settings);
  const size_t blocks = plane.samples.size() / kBlockSize;
  Bytes out;
  out.reserve(plane.samples.size() / 4 * 5 + options.minimumCodedSize);
  AppendLowBits(plane, out);
  const size_t codedEnd = out.size() + options.minimumCodedSize;
  out.resize(out.size() + settings.dataSkip1 + settings.dataSkip2, options.filler);

  BlockEncoder encoder(CodeSetFor(settings.codeSet), options, out);
  int predictors[2] = {kLineStart, kLineStart};
  size_t position = 0;
  std::array<int, kBlockSize> differences;
  for (size_t block = 0; block < blocks; ++block) {
    for (int& difference : differences) {
      const int value = plane.samples[position] >> 2;
      int& predictor = predictors[position % 2];
      difference = value - predictor;
      predictor = value;
      ++position;
      // Line ends are seen after every fourth sample only.
      if (position % 4 == 0 && position % plane.width == 0) {
        predictors[0] = predictors[1] = kLineStart;
      }
    }
    encoder.Encode(differences);
  }
  encoder.Finish();
  if (out.size() < codedEnd) out.resize(codedEnd, options.filler);
  return out;
}

}  // namespace deimg::rawfile

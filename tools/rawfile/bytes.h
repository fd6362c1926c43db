/// Byte strings in either byte order, and the error every part of the writer throws.
#ifndef DEIMG_RAWFILE_BYTES_H
#define DEIMG_RAWFILE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace deimg::rawfile {

using Bytes = std::vector<uint8_t>;

/// The order of the bytes of 16-bit and 32-bit values: "II" or "MM" at the start of the file.
enum class ByteOrder { kLittle, kBig };

/// What was asked for cannot be written as a raw file.
class WriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Appends values to a byte string in a chosen byte order.
class ByteWriter {
 public:
  explicit ByteWriter(ByteOrder order) : order_(order) {}

  void U16(uint32_t value) {
    const auto low = static_cast<uint8_t>(value);
    const auto high = static_cast<uint8_t>(value >> 8);
    bytes_.push_back(order_ == ByteOrder::kLittle ? low : high);
    bytes_.push_back(order_ == ByteOrder::kLittle ? high : low);
  }
  void U32(uint32_t value) {
    U16(order_ == ByteOrder::kLittle ? value & 0xFFFF : value >> 16);
    U16(order_ == ByteOrder::kLittle ? value >> 16 : value & 0xFFFF);
  }
  void Append(std::span<const uint8_t> data) {
    bytes_.insert(bytes_.end(), data.begin(), data.end());
  }
  void Fill(size_t count, uint8_t value) { bytes_.insert(bytes_.end(), count, value); }

  size_t size() const { return bytes_.size(); }
  Bytes Take() { return std::move(bytes_); }

 private:
  ByteOrder order_;
  Bytes bytes_;
};

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_BYTES_H

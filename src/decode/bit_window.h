/// The next bits of a byte sequence in one word.
#ifndef DEIMG_DECODE_BIT_WINDOW_H
#define DEIMG_DECODE_BIT_WINDOW_H

#include <cstdint>

namespace deimg {

/// Most significant bits first: at least 49 of them at first, 56 after a refill. Both touch the
/// eight bytes from the next one on that the window does not hold whole.
class BitWindow {
 public:
  BitWindow(const std::uint8_t* bytes, std::uint32_t position)
      : bytes_(bytes),
        next_(bytes + position / 8 + 7),
        bits_(LoadBigEndian64(bytes + position / 8) << position % 8),
        count_(56 - position % 8) {}

  std::uint64_t bits() const { return bits_; }
  void Use(std::uint32_t count) {
    bits_ <<= count;
    count_ -= count;
  }
  /// Fills up with whole bytes. The bits below the counted ones are already those that follow.
  void Refill() {
    bits_ |= LoadBigEndian64(next_) >> count_;
    next_ += (63 - count_) / 8;
    count_ |= 56;
  }
  std::uint32_t position() const { return static_cast<std::uint32_t>(next_ - bytes_) * 8 - count_; }

 private:
  /// Spelled out: compilers recognise this as one load and a byte swap, but not a loop.
  static std::uint64_t LoadBigEndian64(const std::uint8_t* p) {
    return std::uint64_t{p[0]} << 56 | std::uint64_t{p[1]} << 48 | std::uint64_t{p[2]} << 40 |
           std::uint64_t{p[3]} << 32 | std::uint64_t{p[4]} << 24 | std::uint64_t{p[5]} << 16 |
           std::uint64_t{p[6]} << 8 | std::uint64_t{p[7]};
  }

  const std::uint8_t* bytes_;
  const std::uint8_t* next_;
  std::uint64_t bits_;
  std::uint32_t count_;  // below 64
};

}  // namespace deimg

#endif  // DEIMG_DECODE_BIT_WINDOW_H

/// Records made of 16-bit words, some of which nobody reads.
#ifndef DEIMG_RAWFILE_WORDS_H
#define DEIMG_RAWFILE_WORDS_H

#include "rawfile/bytes.h"

namespace deimg::rawfile {

/// Collects words. Those that no reader looks at are zero, or noise drawn from a seed: a picture
/// must not depend on them.
class WordWriter {
 public:
  /// @param unreadSeed 0: unread words are zero.
  explicit WordWriter(uint32_t unreadSeed) : state_(unreadSeed) {}

  /// One word; only the low 16 bits count.
  void Put(int64_t value) { words_.push_back(static_cast<uint16_t>(value)); }
  /// A 32-bit value as two words, low word first.
  void Put32(int64_t value) {
    Put(value);
    Put(value >> 16);
  }
  template <typename Range>
  void PutAll(const Range& values) {
    for (const auto value : values) Put(value);
  }
  /// Unread words up to word `index` of the record.
  void UnreadTo(size_t index) {
    while (words_.size() < index) {
      state_ = state_ * 1664525 + (state_ != 0 ? 1013904223 : 0);
      words_.push_back(static_cast<uint16_t>(state_ >> 16));
    }
  }
  void Unread(size_t count) { UnreadTo(words_.size() + count); }

  size_t size() const { return words_.size(); }
  Bytes Take(ByteOrder order) const {
    ByteWriter out(order);
    for (const uint16_t word : words_) out.U16(word);
    return out.Take();
  }
  /// The words in pairs, as 32-bit values.
  Bytes Take32(ByteOrder order) const {
    ByteWriter out(order);
    for (size_t i = 0; i + 1 < words_.size(); i += 2) {
      out.U32(words_[i] | uint32_t{words_[i + 1]} << 16);
    }
    return out.Take();
  }

 private:
  uint32_t state_;
  std::vector<uint16_t> words_;
};

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_WORDS_H

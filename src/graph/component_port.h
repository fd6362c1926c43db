/// An output port of a component: a ring of image lines.
#ifndef DEIMG_GRAPH_COMPONENT_PORT_H
#define DEIMG_GRAPH_COMPONENT_PORT_H

#include <cstddef>
#include <cstdint>

#include "base/result.h"
#include "line/line.h"
#include "line/range.h"
#include "storage/mem_block.h"

namespace deimg {

/// Holds an odd number of lines around a centre line; a line is addressed by its offset from the
/// centre. Moving on by one line copies nothing: the oldest line becomes the newest.
class ComponentPort {
 public:
  /// `index` is the port's place in its component, `width` its samples per line.
  ComponentPort(int index, int width, int sampleBytes);

  /// "Component" and the port's index.
  const char* name() const { return name_; }
  int width() const { return width_; }
  int sampleBytes() const { return sampleBytes_; }
  int lines() const { return lines_; }
  /// What its samples can be; anything where nothing was declared.
  Range range() const { return range_; }

  /// Says what the port holds, before it has a ring.
  void Declare(int sampleBytes, Range range);

  /// Gives the port a zeroed ring; an existing one is kept. 96 for fewer than one line, 3 when
  /// memory is short.
  [[nodiscard]] Result Allocate(int lines);

  /// The line at this offset, or null without a ring or outside it.
  template <typename T = Sample>
  T* Line(int offset) const {
    return reinterpret_cast<T*>(LineStart(offset));
  }

  /// Moves the centre on by one line and returns the line that was the oldest and is now the
  /// newest; null without a ring.
  std::uint8_t* Rotate();

  /// Puts the centre back into the middle of the ring.
  void Reset() { head_ = lines_ / 2; }

 private:
  std::uint8_t* LineStart(int offset) const {
    if (!buffer_ || offset < -(lines_ / 2) || offset > lines_ / 2) return nullptr;
    int i = head_ + offset;
    if (i < 0) i += lines_;
    if (i >= lines_) i -= lines_;
    return buffer_.get() + static_cast<std::ptrdiff_t>(i) * stride_;
  }

  char name_[16];
  int sampleBytes_;
  int width_;
  int stride_ = 0;  // bytes from line to line
  Range range_{};
  int head_ = 0;
  int lines_ = 0;
  BlockOf<std::uint8_t> buffer_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_COMPONENT_PORT_H

/// An output port of a component: a ring of image lines.
#ifndef DEIMG_GRAPH_COMPONENT_PORT_H
#define DEIMG_GRAPH_COMPONENT_PORT_H

#include "base/result.h"
#include "line/line.h"
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

  /// Gives the port a zeroed ring; an existing one is kept. 96 for fewer than one line, 3 when
  /// memory is short.
  [[nodiscard]] Result Allocate(int lines);

  /// The line at this offset, or null without a ring or outside it. Every line has room for samples
  /// as wide as Sample; a component may fill it with narrower ones.
  template <typename T = Sample>
  T* Line(int offset) const {
    static_assert(sizeof(T) <= sizeof(Sample));
    return reinterpret_cast<T*>(LineStart(offset));
  }

  /// Moves the centre on by one line and returns the line that was the oldest and is now the
  /// newest; null without a ring.
  Sample* Rotate();

  /// Puts the centre back into the middle of the ring.
  void Reset() { head_ = lines_ / 2; }

 private:
  Sample* LineStart(int offset) const;

  char name_[16];
  int sampleBytes_;
  int width_;
  int stride_;  // samples from line to line: the width, rounded up to keep lines aligned
  int head_ = 0;
  int lines_ = 0;
  BlockOf<Sample> buffer_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_COMPONENT_PORT_H

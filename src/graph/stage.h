/// A component whose lines are computed from its inputs' lines, and how it reaches both.
#ifndef DEIMG_GRAPH_STAGE_H
#define DEIMG_GRAPH_STAGE_H

#include <initializer_list>

#include "graph/component.h"

namespace deimg {

/// The base of the stages. A stage names its inputs when it is made, checks and derives everything
/// in Prepare(), and computes a line in ComputeLine(), which cannot fail.
class Stage : public ComponentX {
 public:
  /// `scratchLines` further lines are allocated with the rings, for intermediate results.
  Stage(const ComponentInfo& info, PlaneSize size, std::initializer_list<ComponentX*> inputs,
        int scratchLines = 0, int sampleBytes = sizeof(Sample));

  [[nodiscard]] Result Run(int first, int last) final;
  [[nodiscard]] Result AllocateBuffers() final;

 protected:
  /// Computes the line at an offset from the current one, for every port.
  virtual void ComputeLine(int offset) = 0;

  /// A scratch line; its contents last until the next line is computed.
  template <typename T = Sample>
  T* Scratch(int index) const {
    return scratch_->Line<T>(index - scratchLines_ / 2);
  }
  /// Says that samples of type T have to hold a value between: a graph of narrow samples in which
  /// they do not is not used.
  template <typename T>
  void Needs(Range range) {
    rangesFit_ = rangesFit_ && range.FitsIn<T>();
  }
  /// The same for a condition that narrow samples of type T need.
  template <typename T>
  void NeedsNarrow(bool condition) {
    rangesFit_ = rangesFit_ && (condition || sizeof(T) == sizeof(Sample));
  }
  /// Whether the line at an offset is odd.
  bool IsOddAt(int offset) const { return IsOddLine(currentLine_ + offset); }

 private:
  template <typename T>
  friend class Input;
  template <typename T>
  friend class Output;

  /// Ends the program, saying which stage read which port where, when that is not in its window.
  void CheckRead(const ComponentX& source, int port, int offset) const;
  void CheckWrite(int port, int offset) const;
  /// Ends the program when a sample of the line just computed lies outside its port's range.
  void CheckRanges(int offset) const;

  const int scratchLines_;
  int computedOffset_ = 0;  // the line that is being computed
  std::optional<ComponentPort> scratch_;
};

/// The seven lines around the one computed, from three above to three below.
template <typename T>
struct SevenLines {
  const T* line[7];
};

/// A port that a stage reads: input[offset] is its line there. In builds that check contracts, a
/// line outside the window that the stage declares ends the program.
template <typename T>
class Input {
 public:
  Input(const Stage& reader, const ComponentX& source, int port)
      : reader_(reader), source_(source), port_(port) {}

  const T* operator[](int offset) const {
#ifdef DEIMG_CHECK_CONTRACTS
    reader_.CheckRead(source_, port_, offset);
#endif
    return source_.GetLine<T>(offset, port_);
  }
  /// What its samples can be.
  Range range() const { return source_.port(port_)->range(); }
  SevenLines<T> Around(int offset) const {
    SevenLines<T> lines;
    for (int i = 0; i < 7; ++i) lines.line[i] = (*this)[offset + i - 3];
    return lines;
  }

 private:
  [[maybe_unused]] const Stage& reader_;
  const ComponentX& source_;
  const int port_;
};

/// A port of the stage's own: output[offset] is the line to be written. `range` is what its samples
/// can be, derived from the inputs' ranges.
template <typename T>
class Output {
 public:
  Output(Stage& stage, int port, Range range = kAnything) : stage_(stage), port_(port) {
    stage.Declare(port, sizeof(T), range);
    if (range != kAnything) stage.Needs<T>(range);
  }

  Range range() const { return stage_.port(port_)->range(); }

  T* operator[](int offset) const {
#ifdef DEIMG_CHECK_CONTRACTS
    stage_.CheckWrite(port_, offset);
#endif
    return stage_.port(port_)->Line<T>(offset);
  }

 private:
  const Stage& stage_;
  const int port_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_STAGE_H

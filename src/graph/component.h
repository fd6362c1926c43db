/// The base of every processing component.
#ifndef DEIMG_GRAPH_COMPONENT_H
#define DEIMG_GRAPH_COMPONENT_H

#include <array>
#include <optional>

#include "api/result.h"
#include "graph/component_port.h"
#include "graph/component_table.h"
#include "graph/kernels.h"
#include "graph/line.h"

namespace deimg {

/// A component reads up to ten others and delivers its lines on up to eight ports.
///
/// The graph is pulled from its last component. Start() brings a component and everything it reads
/// to a first line, Advance() on by one line; each line of each component is computed once. A port
/// keeps as many lines around the current one as the component's consumers need.
///
/// The contract of Run(first, last): compute the output lines at the offsets first to last from the
/// current line, reading input lines up to reach / 2 away, and write each into every own port.
/// Rings, contexts and rotation are this class's business alone.
class ComponentX {
 public:
  static constexpr int kMostPorts = 8;
  static constexpr int kMostInputs = 10;
  static constexpr int kNotStarted = -1;

  /// `width` is the samples per line of every port. `scratchLines` further lines of that width are
  /// allocated with the rings, for a stage's intermediate results.
  ComponentX(const ComponentInfo& info, int width, int height, int sampleBytes,
             int scratchLines = 0);
  ComponentX(const ComponentX&) = delete;
  ComponentX& operator=(const ComponentX&) = delete;
  virtual ~ComponentX();

  /// Computes lines, see above. A nonzero result ends the job.
  [[nodiscard]] virtual Result Run(int first, int last) = 0;

  /// Moves on by one line, inputs first. Nothing happens when `line` is the current line already;
  /// 8 when the component was never started.
  [[nodiscard]] virtual Result Advance(int line);

  /// Allocates the rings once; 3 when memory is short.
  [[nodiscard]] virtual Result AllocateBuffers();

  /// A port's line at this offset from the current one, of samples of type T; null when there is
  /// none.
  template <typename T = Sample>
  const T* GetLine(int offset, int portIndex) const {
    return static_cast<const T*>(LineAt(offset, portIndex));
  }

  /// Moves every port on by one line; 98 when one has no ring.
  [[nodiscard]] virtual Result Rotate();

  /// Appends an input; 7 when all slots are taken.
  [[nodiscard]] Result Connect(ComponentX& input);

  /// Takes over the need of a consumer if it is the largest so far, and hands on its own.
  void ComputeContext(int need);

  /// Brings inputs and then this component to `line`.
  [[nodiscard]] Result Start(int line);

  /// Allocates the rings if needed and centres every port.
  [[nodiscard]] Result ResetRings();

  /// Copies lines from one port to another of the same width.
  static void CopyLines(const ComponentPort& source, ComponentPort& destination, int first,
                        int last);

  TypeId typeId() const { return info_.typeId; }
  const char* name() const { return info_.name; }
  int kernelLines() const { return info_.kernelLines; }
  int portCount() const { return info_.portCount; }
  int sampleBytes() const { return sampleBytes_; }
  int width() const { return width_; }
  int height() const { return height_; }
  int reach() const;
  int context() const { return context_; }
  int runFirst() const { return -(context_ / 2); }
  int runLast() const { return context_ / 2; }
  int currentLine() const { return currentLine_; }

  /// The port in a slot, or null.
  const ComponentPort* port(int index) const;

 protected:
  /// Where GetLine() finds a line: in the port's ring, unless a component keeps its lines
  /// elsewhere.
  [[nodiscard]] virtual const void* LineAt(int offset, int portIndex) const;

  /// The input in a slot; null when empty.
  ComponentX* input(int slot) const { return inputs_[static_cast<std::size_t>(slot)]; }
  /// The first, or the last, input of a type among the first `slots`; null when there is none.
  ComponentX* FirstInput(TypeId typeId) const;
  ComponentX* LastInput(TypeId typeId, int slots = kMostInputs) const;

  /// The input's lines on its port 0 around an offset.
  template <typename T>
  static SevenLines<T> LinesAround(const ComponentX& source, int offset) {
    SevenLines<T> lines;
    for (int i = 0; i < 7; ++i) lines.line[i] = source.GetLine<T>(offset + i - 3, 0);
    return lines;
  }

  /// An own line, to be written.
  template <typename T = Sample>
  T* OwnLine(int offset, int portIndex) const {
    return ports_[static_cast<std::size_t>(portIndex)]->Line<T>(offset);
  }
  /// A scratch line; its contents last until the next line is computed.
  template <typename T = Sample>
  T* Scratch(int index) const {
    return scratch_->Line<T>(index - scratchLines_ / 2);
  }
  /// Whether the line at an offset is odd.
  bool IsOddAt(int offset) const { return IsOddLine(currentLine_ + offset); }

  int currentLine_ = kNotStarted;

 private:
  const ComponentInfo& info_;
  const int width_;
  const int height_;
  const int sampleBytes_;
  const int scratchLines_;
  bool buffersReady_ = false;
  bool contextReady_ = false;
  int context_ = 0;
  int inputCount_ = 0;
  std::array<ComponentX*, kMostInputs> inputs_{};
  std::array<std::optional<ComponentPort>, kMostPorts> ports_;
  std::optional<ComponentPort> scratch_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_COMPONENT_H

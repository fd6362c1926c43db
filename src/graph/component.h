/// The base of every processing component.
#ifndef DEIMG_GRAPH_COMPONENT_H
#define DEIMG_GRAPH_COMPONENT_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "base/result.h"
#include "graph/component_port.h"
#include "line/line.h"

namespace deimg {

/// Type numbers of components; which ones there are is no business of the engine.
enum class TypeId : std::int32_t;

/// What is fixed about a component.
struct ComponentInfo {
  TypeId typeId;
  const char* name;  // Shift-JIS
  int windowLines;   // input lines that one output line needs, the middle one being its own
  int portCount;
};

/// Samples per line and lines of a plane.
struct PlaneSize {
  int width;
  int height;
};

/// A component reads up to ten others and delivers its lines on up to eight ports.
///
/// The graph is pulled from its last component. Start() brings a component and everything it reads
/// to a line, Advance() on by one line; each line of each component is computed once after a start.
///
/// A component's border is how many lines beyond its own its window reaches on both sides together;
/// its margin how many lines beyond the current one its consumers need: the largest sum of borders
/// on any path to the last component. A port keeps margin + 1 lines, the current one in the middle.
///
/// The contract of Run(first, last): compute the output lines at the offsets first to last from the
/// current line, reading input lines up to border / 2 away, and write each into every own port.
/// Rings, margins and rotation are this class's business alone.
class ComponentX {
 public:
  static constexpr int kMostPorts = 8;
  static constexpr int kMostInputs = 10;
  static constexpr int kNotStarted = -1;

  ComponentX(const ComponentInfo& info, PlaneSize size, int sampleBytes);
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

  /// Checks settings and tuning and builds tables, once, before the first line is computed and
  /// after all inputs computed theirs.
  [[nodiscard]] virtual Result Prepare() { return DEIMG_OK; }

  /// Whether a line depends on the one computed before it, and not on input lines alone: then lines
  /// have to be computed in order, from the first one on.
  [[nodiscard]] virtual bool NeedsLineBefore() const { return false; }

  /// Appends an input; 7 when all slots are taken.
  [[nodiscard]] Result Connect(ComponentX& input);

  /// Takes over the need of a consumer as its margin if it is the largest so far, and hands on its
  /// own.
  void ComputeContext(int need);

  /// Brings inputs and then this component to `line`, from wherever they were; nothing is prepared
  /// or allocated a second time.
  [[nodiscard]] Result Start(int line);

  /// Allocates the rings if needed and centres every port.
  [[nodiscard]] Result ResetRings();

  TypeId typeId() const { return info_.typeId; }
  const char* name() const { return info_.name; }
  int windowLines() const { return info_.windowLines; }
  int portCount() const { return info_.portCount; }
  int sampleBytes() const { return sampleBytes_; }
  int width() const { return size_.width; }
  int height() const { return size_.height; }
  int border() const;
  int margin() const { return margin_; }
  int runFirst() const { return -(margin_ / 2); }
  int runLast() const { return margin_ / 2; }
  int currentLine() const { return currentLine_; }

  /// Whether the samples of every port, and what is computed between, hold their ranges.
  bool rangesFit() const { return rangesFit_; }

  /// The port in a slot, or null.
  const ComponentPort* port(int index) const;
  /// The inputs in the order of their connection.
  std::span<ComponentX* const> inputs() const {
    return {inputs_.data(), static_cast<std::size_t>(inputCount_)};
  }

 protected:
  /// Where GetLine() finds a line: in the port's ring, unless a component keeps its lines
  /// elsewhere.
  [[nodiscard]] virtual const void* LineAt(int offset, int portIndex) const;

  /// Says what a port holds, see ComponentPort.
  void Declare(int port, int sampleBytes, Range range) {
    ports_[static_cast<std::size_t>(port)]->Declare(sampleBytes, range);
  }

  int currentLine_ = kNotStarted;
  bool rangesFit_ = true;

 private:
  std::span<std::optional<ComponentPort>> ports() {
    return std::span(ports_).first(static_cast<std::size_t>(info_.portCount));
  }

  const ComponentInfo& info_;
  const PlaneSize size_;
  const int sampleBytes_;
  bool buffersReady_ = false;
  bool contextReady_ = false;
  bool prepared_ = false;
  int margin_ = 0;
  int inputCount_ = 0;
  std::array<ComponentX*, kMostInputs> inputs_{};
  std::array<std::optional<ComponentPort>, kMostPorts> ports_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_COMPONENT_H

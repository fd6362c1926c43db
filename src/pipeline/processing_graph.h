/// The twenty components of a development, wired, as every instruction level has them.
#ifndef DEIMG_PIPELINE_PROCESSING_GRAPH_H
#define DEIMG_PIPELINE_PROCESSING_GRAPH_H

#include <memory>

#include "base/result.h"
#include "stages/component_table.h"
#include "stages/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

class Bands;

/// Made by a level's factory (levels.h), in a block of the library's memory: null when it is short.
class ProcessingGraph {
 public:
  virtual ~ProcessingGraph() = default;
  static void* operator new(std::size_t bytes) noexcept { return MemBlock::Allocate(bytes); }
  static void operator delete(void* block) noexcept { (void)MemBlock::Release(block); }

  /// Opens the output, pulls the image area's lines through the graph, reports progress and closes
  /// the output. `status` is the status word handed to Open; a nonzero word of the output or a
  /// component's failure ends the run with that code, and the output is not closed then. Lines that
  /// other threads have finished are taken from `bands`, when there are any.
  [[nodiscard]] Result Run(CallerStream& output, Result status, Bands* bands);

  /// Computes a line of the image area, wherever the graph was before, and hands it to the output's
  /// Write. No line of the plane from `planeEnd` on is read, which is more than kReach lines below.
  [[nodiscard]] Result DeliverLine(int line, int planeEnd, CallerStream& output);

  /// Lines of the plane above and below a line that it takes to compute it.
  static constexpr int kReach = 4;

  /// Whether a line can be computed without the line before it.
  [[nodiscard]] bool LinesAreIndependent();

  /// Whether all that is computed holds its range, see line/range.h.
  [[nodiscard]] bool RangesFit();

  /// The component of a type; null when the graph has none.
  [[nodiscard]] ComponentX* Find(TypeId typeId);

 protected:
  explicit ProcessingGraph(const ImageGeometry& geometry) : geometry_(geometry) {}

 private:
  /// The component that delivers; everything else is read by it, directly or not.
  [[nodiscard]] virtual ComponentX& last() = 0;
  /// See SourceStreamReader.
  virtual void ReadBefore(int line) = 0;
  /// Hands the last component's current line to the output.
  [[nodiscard]] virtual Result Deliver(CallerStream& output) = 0;

  const ImageGeometry& geometry_;
};

using GraphOwner = std::unique_ptr<ProcessingGraph>;

}  // namespace deimg

#endif  // DEIMG_PIPELINE_PROCESSING_GRAPH_H

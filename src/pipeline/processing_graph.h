/// The twenty components of a development, wired, as every instruction level has them.
#ifndef DEIMG_PIPELINE_PROCESSING_GRAPH_H
#define DEIMG_PIPELINE_PROCESSING_GRAPH_H

#include <memory>

#include "base/result.h"
#include "stages/component_table.h"
#include "stages/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

/// Made by a level's factory (levels.h), in a block of the library's memory: null when it is short.
class ProcessingGraph {
 public:
  virtual ~ProcessingGraph() = default;
  static void* operator new(std::size_t bytes) noexcept { return MemBlock::Allocate(bytes); }
  static void operator delete(void* block) noexcept { (void)MemBlock::Release(block); }

  /// Opens the output, pulls the image area's lines through the graph, reports progress and closes
  /// the output. `status` is the status word handed to Open; a nonzero word of the output or a
  /// component's failure ends the run with that code, and the output is not closed then.
  [[nodiscard]] Result Run(CallerStream& output, Result status);

  /// The component of a type; null when the graph has none.
  [[nodiscard]] ComponentX* Find(TypeId typeId);

 protected:
  explicit ProcessingGraph(const ImageGeometry& geometry) : geometry_(geometry) {}

 private:
  /// The component that delivers; everything else is read by it, directly or not.
  [[nodiscard]] virtual ComponentX& last() = 0;
  /// Hands the last component's current line to the output.
  [[nodiscard]] virtual Result Deliver(CallerStream& output) = 0;

  const ImageGeometry& geometry_;
};

using GraphOwner = std::unique_ptr<ProcessingGraph>;

}  // namespace deimg

#endif  // DEIMG_PIPELINE_PROCESSING_GRAPH_H

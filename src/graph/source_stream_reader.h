/// The graph's first component: lines of the decoded sensor plane.
#ifndef DEIMG_GRAPH_SOURCE_STREAM_READER_H
#define DEIMG_GRAPH_SOURCE_STREAM_READER_H

#include "graph/component.h"
#include "graph/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

/// Serves the plane's lines, widened to 32 bits, from a cache of 200 lines that it fills with large
/// sequential reads. Lines above and below the plane are copies of its first and last line.
///
/// Its port never receives a ring: consumers read it through GetLine() only, at the offsets
/// runFirst() to runLast().
class SourceStreamReader final : public ComponentX {
 public:
  static constexpr int kCacheLines = 200;

  /// The stream holds the context's `height` lines of `width` unsigned 16-bit little-endian
  /// samples.
  SourceStreamReader(CallerStream& plane, const StageContext& context);
  ~SourceStreamReader() override;

  [[nodiscard]] Result Run(int first, int last) override;
  [[nodiscard]] Result Advance(int line) override;
  [[nodiscard]] Result AllocateBuffers() override { return DEIMG_OK; }
  [[nodiscard]] const Sample* GetLine(int offset, int portIndex) override;

 private:
  [[nodiscard]] Result Fill(int top);

  CallerStream& plane_;
  const Kernels& kernels_;
  const int lastValidLine_;
  bool streamOpen_ = false;
  int cacheFirst_ = 65000;  // while the cache is empty
  int cacheLast_ = -1;
  int cacheBase_ = -1;  // cache line of the current line
  BlockOf<Sample> lineCache_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_SOURCE_STREAM_READER_H

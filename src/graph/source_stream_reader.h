/// The graph's first component: lines of the decoded sensor plane.
#ifndef DEIMG_GRAPH_SOURCE_STREAM_READER_H
#define DEIMG_GRAPH_SOURCE_STREAM_READER_H

#include "graph/component.h"
#include "graph/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

/// Serves the plane's lines, unsigned 16-bit samples, from a cache of 200 lines that it fills with
/// large sequential reads. Lines above and below the plane are its first and last line again. The
/// port never receives a ring: a consumer gets the cache's lines, at the offsets runFirst() to
/// runLast().
class SourceStreamReader final : public ComponentX {
 public:
  static constexpr int kCacheLines = 200;

  /// The stream holds the context's `height` lines of `width` unsigned 16-bit little-endian
  /// samples.
  SourceStreamReader(CallerStream& plane, const StageContext& context);
  ~SourceStreamReader() override;

  [[nodiscard]] Result Run(int first, int last) override;
  [[nodiscard]] Result AllocateBuffers() override { return DEIMG_OK; }
  [[nodiscard]] Result Rotate() override;

 protected:
  [[nodiscard]] const void* LineAt(int offset, int portIndex) const override;

 private:
  [[nodiscard]] Result Fill(int firstLine);
  /// The plane's line that stands for the one at an offset from the current one.
  int PlaneLine(int offset) const;

  CallerStream& plane_;
  const int lastValidLine_;
  bool streamOpen_ = false;
  int cacheFirst_ = 0;  // the plane's lines in the cache
  int cacheLast_ = -1;
  BlockOf<std::uint16_t> lineCache_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_SOURCE_STREAM_READER_H

/// The graph's first component: lines of the decoded sensor plane.
#ifndef DEIMG_STAGES_SOURCE_STREAM_READER_INL_H
#define DEIMG_STAGES_SOURCE_STREAM_READER_INL_H

#include <algorithm>
#include <bit>
#include <cstddef>

#include "base/byte_order.h"
#include "graph/component.h"
#include "stages/component_table.h"
#include "stages/stage_context.h"
#include "storage/mem_block.h"
#include "storage/sensor_plane.h"
#include "storage/stream_calls.h"

namespace deimg::DEIMG_LEVEL {

/// Serves the plane's lines, unsigned 16-bit samples: those in memory as they are, others from a
/// cache of 200 lines that it fills with large sequential reads. Lines above and below the plane
/// are its first and last line again; of a plane that is still being filled, no line is read that
/// is not there yet, see ReadBefore(). The port never receives a ring: a consumer gets the plane's
/// or the cache's lines, at the offsets runFirst() to runLast().
class SourceStreamReader final : public ComponentX {
 public:
  enum Port { kRaw };
  static constexpr int kCacheLines = 200;

  SourceStreamReader(const StageContext& context, const SensorPlane& plane)
      : ComponentX(InfoOf(TypeId::kSourceStreamReader), context.size(), 2),
        plane_(plane.stream),
        // Samples in memory are read in place where they have the machine's byte order.
        inPlace_(std::endian::native == std::endian::little ? plane.samples : nullptr) {}
  ~SourceStreamReader() override {
    if (streamOpen_) (void)Close(plane_);
  }

  /// Reads no line of the plane from `line` on: it reaches beyond what will be asked for next.
  void ReadBefore(int line) { end_ = std::min(line, height()); }

  /// Reading the plane may fail: with an error word of the stream, or 39 when it ends too early.
  [[nodiscard]] Result Run(int /*first*/, int /*last*/) override {
    if (inPlace_ != nullptr) return DEIMG_OK;
    const int top = PlaneLine(runFirst());
    const int bottom = PlaneLine(runLast());
    return top < cacheFirst_ || bottom > cacheLast_ ? Fill(top) : Result{DEIMG_OK};
  }
  [[nodiscard]] Result AllocateBuffers() override { return DEIMG_OK; }
  [[nodiscard]] Result Prepare() override {
    if (inPlace_ != nullptr) return DEIMG_OK;
    lineCache_ =
        BlockOf<std::uint16_t>::Uninitialised(static_cast<std::uint64_t>(width()) * kCacheLines);
    return lineCache_ ? DEIMG_OK : DEIMG_OUT_OF_MEMORY;
  }
  [[nodiscard]] Result Rotate() override {
    ++currentLine_;
    return DEIMG_OK;
  }

 private:
  [[nodiscard]] const void* LineAt(int offset, int /*portIndex*/) const override {
    const std::ptrdiff_t line = PlaneLine(offset);
    return inPlace_ != nullptr ? inPlace_ + line * width()
                               : lineCache_.get() + (line - cacheFirst_) * width();
  }

  /// The plane's line that stands for the one at an offset from the current one.
  int PlaneLine(int offset) const { return std::clamp(currentLine_ + offset, 0, height() - 1); }

  [[nodiscard]] Result Fill(int firstLine) {
    if (!streamOpen_) {
      DEIMG_RETURN_IF_FAILED(Open(plane_, DEIMG_OPEN_READ));
      streamOpen_ = true;
    }
    const int lastLine = std::min(firstLine + kCacheLines, end_) - 1;
    const auto lineBytes = 2u * static_cast<std::uint32_t>(width());
    const std::uint32_t bytes = static_cast<std::uint32_t>(lastLine - firstLine + 1) * lineBytes;
    DEIMG_RETURN_IF_FAILED(SeekTo(plane_, lineBytes * static_cast<std::uint32_t>(firstLine)));
    std::uint32_t delivered = 0;
    DEIMG_RETURN_IF_FAILED(Read(plane_, lineCache_.get(), bytes, delivered));
    if (delivered < bytes) return DEIMG_FILE_READ;
    ToLittleEndian(lineCache_.get(), bytes / 2);  // and back, which is the same
    cacheFirst_ = firstLine;
    cacheLast_ = lastLine;
    return DEIMG_OK;
  }

  CallerStream& plane_;
  const std::uint16_t* const inPlace_;
  int end_ = height();
  bool streamOpen_ = false;
  int cacheFirst_ = 0;  // the plane's lines in the cache
  int cacheLast_ = -1;
  BlockOf<std::uint16_t> lineCache_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_SOURCE_STREAM_READER_INL_H

#include "graph/source_stream_reader.h"

#include <algorithm>

#include "props/byte_order.h"
#include "storage/stream_calls.h"

namespace deimg {

SourceStreamReader::SourceStreamReader(CallerStream& plane, const StageContext& context)
    : ComponentX(InfoOf(TypeId::kSourceStreamReader), context.width, context.height, 2),
      plane_(plane),
      lastValidLine_(context.height - 1),
      lineCache_(BlockOf<std::uint16_t>::Uninitialised(static_cast<std::uint64_t>(context.width) *
                                                       kCacheLines)) {}

SourceStreamReader::~SourceStreamReader() {
  if (streamOpen_) (void)Close(plane_);
}

Result SourceStreamReader::Run(int /*first*/, int /*last*/) {
  const int top = PlaneLine(runFirst());
  const int bottom = PlaneLine(runLast());
  return top < cacheFirst_ || bottom > cacheLast_ ? Fill(top) : Result{DEIMG_OK};
}

Result SourceStreamReader::Rotate() {
  ++currentLine_;
  return DEIMG_OK;
}

const void* SourceStreamReader::LineAt(int offset, int /*portIndex*/) const {
  return lineCache_.get() + std::ptrdiff_t{PlaneLine(offset) - cacheFirst_} * width();
}

int SourceStreamReader::PlaneLine(int offset) const {
  return std::clamp(currentLine_ + offset, 0, lastValidLine_);
}

Result SourceStreamReader::Fill(int firstLine) {
  if (!lineCache_) return DEIMG_OUT_OF_MEMORY;
  if (!streamOpen_) {
    DEIMG_RETURN_IF_FAILED(Open(plane_, DEIMG_OPEN_READ));
    streamOpen_ = true;
  }
  const int lastLine = std::min(firstLine + kCacheLines - 1, lastValidLine_);
  const auto lineBytes = 2u * static_cast<std::uint32_t>(width());
  const std::uint32_t bytes = static_cast<std::uint32_t>(lastLine - firstLine + 1) * lineBytes;
  DEIMG_RETURN_IF_FAILED(SeekTo(plane_, lineBytes * static_cast<std::uint32_t>(firstLine)));
  std::uint32_t delivered = 0;
  DEIMG_RETURN_IF_FAILED(Read(plane_, lineCache_.get(), bytes, delivered));
  const std::uint32_t samples = bytes / 2;
  std::fill_n(lineCache_.get() + delivered / 2, samples - delivered / 2, std::uint16_t{0});
  ToLittleEndian(lineCache_.get(), samples);  // and back, which is the same
  cacheFirst_ = firstLine;
  cacheLast_ = lastLine;
  return DEIMG_OK;
}

}  // namespace deimg

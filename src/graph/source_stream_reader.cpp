#include "graph/source_stream_reader.h"

#include <algorithm>

#include "storage/stream_calls.h"

namespace deimg {

SourceStreamReader::SourceStreamReader(CallerStream& plane, const StageContext& context)
    : ComponentX(InfoOf(TypeId::kSourceStreamReader), context.width, context.height, 2),
      plane_(plane),
      kernels_(context.kernels),
      lastValidLine_(context.height - 1),
      lineCache_(
          BlockOf<Sample>::Uninitialised(static_cast<std::uint64_t>(context.width) * kCacheLines)) {
}

SourceStreamReader::~SourceStreamReader() {
  if (streamOpen_) (void)Close(plane_);
}

Result SourceStreamReader::Run(int first, int last) {
  const int top = currentLine_ + first;
  const int bottom = currentLine_ + last;
  if (top < cacheFirst_ || bottom > cacheLast_) DEIMG_RETURN_IF_FAILED(Fill(top));
  cacheBase_ = currentLine_ - cacheFirst_;
  return DEIMG_OK;
}

Result SourceStreamReader::Advance(int line) {
  if (line == currentLine_) return DEIMG_OK;
  if (currentLine_ == kNotStarted) return DEIMG_NOT_STARTED;
  ++currentLine_;
  return Run(runFirst(), runLast());
}

const Sample* SourceStreamReader::GetLine(int offset, int /*portIndex*/) {
  return lineCache_.get() + static_cast<std::ptrdiff_t>(cacheBase_ + offset) * width();
}

Result SourceStreamReader::Fill(int top) {
  if (!lineCache_) return DEIMG_OUT_OF_MEMORY;
  const auto lineBytes = 2u * static_cast<std::uint32_t>(width());
  const int firstLine = std::max(top, 0);
  const int lastLine = std::min(top + kCacheLines - 1, lastValidLine_);
  const auto lines = static_cast<std::uint32_t>(lastLine - firstLine + 1);
  const auto block = BlockOf<std::uint8_t>::Zeroed(std::uint64_t{lines} * lineBytes);
  if (!block) return DEIMG_OUT_OF_MEMORY;

  if (!streamOpen_) {
    DEIMG_RETURN_IF_FAILED(Open(plane_, DEIMG_OPEN_READ));
    streamOpen_ = true;
  }
  DEIMG_RETURN_IF_FAILED(SeekTo(plane_, lineBytes * static_cast<std::uint32_t>(firstLine)));
  std::uint32_t delivered = 0;
  DEIMG_RETURN_IF_FAILED(Read(plane_, block.get(), lines * lineBytes, delivered));

  for (int i = 0; i < kCacheLines; ++i) {
    const int line = std::clamp(top + i, firstLine, lastLine) - firstLine;
    kernels_.widenLine(block.get() + static_cast<std::size_t>(line) * lineBytes, width(),
                       lineCache_.get() + static_cast<std::ptrdiff_t>(i) * width());
  }
  cacheFirst_ = top;
  cacheLast_ = top + kCacheLines - 1;
  return DEIMG_OK;
}

}  // namespace deimg

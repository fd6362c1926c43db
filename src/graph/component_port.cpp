#include "graph/component_port.h"

#include <cstdio>

namespace deimg {
namespace {

constexpr int kLineAlignment = 16;  // samples: 64 bytes

}  // namespace

ComponentPort::ComponentPort(int index, int width, int sampleBytes)
    : sampleBytes_(sampleBytes),
      width_(width),
      stride_((width + kLineAlignment - 1) / kLineAlignment * kLineAlignment) {
  std::snprintf(name_, sizeof(name_), "Component%d", index);
}

Result ComponentPort::Allocate(int lines) {
  if (buffer_) return DEIMG_OK;
  if (lines < 1) return DEIMG_UNSUPPORTED;
  buffer_ = BlockOf<Sample>::Zeroed(static_cast<std::uint64_t>(stride_) *
                                    static_cast<std::uint64_t>(lines));
  if (!buffer_) return DEIMG_OUT_OF_MEMORY;
  lines_ = lines;
  Reset();
  return DEIMG_OK;
}

Sample* ComponentPort::LineStart(int offset) const {
  if (!buffer_ || offset < -(lines_ / 2) || offset > lines_ / 2) return nullptr;
  int i = head_ + offset;
  if (i < 0) i += lines_;
  if (i >= lines_) i -= lines_;
  return buffer_.get() + static_cast<std::ptrdiff_t>(i) * stride_;
}

Sample* ComponentPort::Rotate() {
  Sample* const oldest = LineStart(-(lines_ / 2));
  if (oldest != nullptr && ++head_ == lines_) head_ = 0;
  return oldest;
}

}  // namespace deimg

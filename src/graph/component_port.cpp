#include "graph/component_port.h"

#include <cstdio>

namespace deimg {
namespace {

constexpr int kLineAlignment = 64;  // bytes

}  // namespace

ComponentPort::ComponentPort(int index, int width, int sampleBytes)
    : sampleBytes_(sampleBytes), width_(width) {
  std::snprintf(name_, sizeof(name_), "Component%d", index);
}

void ComponentPort::Declare(int sampleBytes, Range range) {
  sampleBytes_ = sampleBytes;
  range_ = range;
}

Result ComponentPort::Allocate(int lines) {
  if (buffer_) return DEIMG_OK;
  if (lines < 1) return DEIMG_UNSUPPORTED;
  stride_ = (width_ * sampleBytes_ + kLineAlignment - 1) / kLineAlignment * kLineAlignment;
  buffer_ = BlockOf<std::uint8_t>::Zeroed(static_cast<std::uint64_t>(stride_) *
                                          static_cast<std::uint64_t>(lines));
  if (!buffer_) return DEIMG_OUT_OF_MEMORY;
  lines_ = lines;
  Reset();
  return DEIMG_OK;
}

std::uint8_t* ComponentPort::Rotate() {
  std::uint8_t* const oldest = LineStart(-(lines_ / 2));
  if (oldest != nullptr && ++head_ == lines_) head_ = 0;
  return oldest;
}

}  // namespace deimg

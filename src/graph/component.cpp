#include "graph/component.h"

#include <algorithm>

namespace deimg {

ComponentX::ComponentX(const ComponentInfo& info, PlaneSize size, int sampleBytes)
    : info_(info), size_(size), sampleBytes_(sampleBytes) {
  for (int i = 0; i < info.portCount; ++i) {
    ports_[static_cast<std::size_t>(i)].emplace(i, size.width, sampleBytes);
  }
}

ComponentX::~ComponentX() = default;

int ComponentX::border() const { return std::max(info_.windowLines - 1, 0); }

const ComponentPort* ComponentX::port(int index) const {
  if (index < 0 || index >= kMostPorts) return nullptr;
  const auto& slot = ports_[static_cast<std::size_t>(index)];
  return slot ? &*slot : nullptr;
}

const void* ComponentX::LineAt(int offset, int portIndex) const {
  const ComponentPort* const source = port(portIndex);
  return source == nullptr ? nullptr : source->Line(offset);
}

Result ComponentX::Connect(ComponentX& input) {
  if (inputCount_ == kMostInputs) return DEIMG_BAD_REQUEST;
  inputs_[static_cast<std::size_t>(inputCount_++)] = &input;
  return DEIMG_OK;
}

Result ComponentX::AllocateBuffers() {
  if (buffersReady_) return DEIMG_OK;
  for (auto& port : ports()) DEIMG_RETURN_IF_FAILED(port->Allocate(margin_ + 1));
  buffersReady_ = true;
  return DEIMG_OK;
}

Result ComponentX::Rotate() {
  for (auto& port : ports()) {
    if (port->Rotate() == nullptr) return DEIMG_MISSING;
  }
  ++currentLine_;
  return DEIMG_OK;
}

Result ComponentX::ResetRings() {
  DEIMG_RETURN_IF_FAILED(AllocateBuffers());
  for (auto& port : ports()) port->Reset();
  return DEIMG_OK;
}

void ComponentX::ComputeContext(int need) {
  contextReady_ = true;
  margin_ = std::max(margin_, need);
  for (ComponentX* source : inputs()) source->ComputeContext(margin_ + border());
}

Result ComponentX::Start(int line) {
  if (line == currentLine_) return DEIMG_OK;
  // The last component's call reaches the whole graph before any ring is allocated.
  if (!contextReady_) ComputeContext(0);
  DEIMG_RETURN_IF_FAILED(AllocateBuffers());
  for (ComponentX* source : inputs()) DEIMG_RETURN_IF_FAILED(source->Start(line));
  DEIMG_RETURN_IF_FAILED(ResetRings());
  if (!prepared_) DEIMG_RETURN_IF_FAILED(Prepare());
  prepared_ = true;
  currentLine_ = line;
  return Run(runFirst(), runLast());
}

Result ComponentX::Advance(int line) {
  if (line == currentLine_) return DEIMG_OK;
  if (currentLine_ == kNotStarted) return DEIMG_NOT_STARTED;
  for (ComponentX* source : inputs()) DEIMG_RETURN_IF_FAILED(source->Advance(line));
  DEIMG_RETURN_IF_FAILED(Rotate());
  return Run(runLast(), runLast());
}

}  // namespace deimg

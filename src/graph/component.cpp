#include "graph/component.h"

#include <algorithm>

namespace deimg {

ComponentX::ComponentX(const ComponentInfo& info, int width, int height, int sampleBytes,
                       int scratchLines)
    : info_(info),
      width_(width),
      height_(height),
      sampleBytes_(sampleBytes),
      scratchLines_(scratchLines) {
  for (int i = 0; i < info.portCount; ++i) {
    ports_[static_cast<std::size_t>(i)].emplace(i, width, sampleBytes);
  }
}

ComponentX::~ComponentX() = default;

int ComponentX::reach() const { return std::max(info_.kernelLines - 1, 0); }

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

ComponentX* ComponentX::FirstInput(TypeId typeId) const {
  for (ComponentX* candidate : inputs_) {
    if (candidate != nullptr && candidate->typeId() == typeId) return candidate;
  }
  return nullptr;
}

ComponentX* ComponentX::LastInput(TypeId typeId, int slots) const {
  for (int slot = slots - 1; slot >= 0; --slot) {
    if (input(slot) != nullptr && input(slot)->typeId() == typeId) return input(slot);
  }
  return nullptr;
}

Result ComponentX::AllocateBuffers() {
  if (buffersReady_) return DEIMG_OK;
  for (auto& slot : ports_) {
    if (slot) DEIMG_RETURN_IF_FAILED(slot->Allocate(context_ + 1));
  }
  if (scratchLines_ > 0) {
    scratch_.emplace(0, width_, sampleBytes_);
    DEIMG_RETURN_IF_FAILED(scratch_->Allocate(scratchLines_ | 1));
  }
  buffersReady_ = true;
  return DEIMG_OK;
}

Result ComponentX::Rotate() {
  for (auto& slot : ports_) {
    if (slot && slot->Rotate() == nullptr) return DEIMG_MISSING;
  }
  ++currentLine_;
  return DEIMG_OK;
}

Result ComponentX::ResetRings() {
  DEIMG_RETURN_IF_FAILED(AllocateBuffers());
  for (auto& slot : ports_) {
    if (slot) slot->Reset();
  }
  return DEIMG_OK;
}

void ComponentX::ComputeContext(int need) {
  contextReady_ = true;
  context_ = std::max(context_, need);
  for (ComponentX* source : inputs_) {
    if (source != nullptr) source->ComputeContext(context_ + reach());
  }
}

Result ComponentX::Start(int line) {
  if (line == currentLine_) return DEIMG_OK;
  // The last component's call reaches the whole graph before any ring is allocated.
  if (!contextReady_) ComputeContext(0);
  DEIMG_RETURN_IF_FAILED(AllocateBuffers());
  for (ComponentX* source : inputs_) {
    if (source != nullptr) DEIMG_RETURN_IF_FAILED(source->Start(line));
  }
  DEIMG_RETURN_IF_FAILED(ResetRings());
  currentLine_ = line;
  DEIMG_RETURN_IF_FAILED(Run(runFirst(), runLast()));
  currentLine_ = line;
  return DEIMG_OK;
}

Result ComponentX::Advance(int line) {
  if (line == currentLine_) return DEIMG_OK;
  if (currentLine_ == kNotStarted) return DEIMG_NOT_STARTED;
  for (int slot = 0; slot < inputCount_; ++slot) {
    DEIMG_RETURN_IF_FAILED(input(slot)->Advance(line));
  }
  DEIMG_RETURN_IF_FAILED(Rotate());
  return Run(runLast(), runLast());
}

void ComponentX::CopyLines(const ComponentPort& source, ComponentPort& destination, int first,
                           int last) {
  for (int o = first; o <= last; ++o) {
    std::copy_n(source.Line<Sample>(o), source.width(), destination.Line<Sample>(o));
  }
}

}  // namespace deimg

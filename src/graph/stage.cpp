#include "graph/stage.h"

#include <cstdio>
#include <cstdlib>

namespace deimg {
namespace {

[[noreturn]] void Break(const ComponentX& stage, const ComponentX& owner, const char* did, int port,
                        int offset) {
  std::fprintf(stderr,
               "contract broken: stage \"%s\" (type %d, window of %d lines) %s port %d of \"%s\" "
               "(type %d) at offset %d\n",
               stage.name(), static_cast<int>(stage.typeId()), stage.windowLines(), did, port,
               owner.name(), static_cast<int>(owner.typeId()), offset);
  std::abort();
}

}  // namespace

Stage::Stage(const ComponentInfo& info, PlaneSize size, std::initializer_list<ComponentX*> inputs,
             int scratchLines, int sampleBytes)
    : ComponentX(info, size, sampleBytes), scratchLines_(scratchLines) {
  for (ComponentX* input : inputs) (void)Connect(*input);  // no stage has more than it may have
}

Result Stage::AllocateBuffers() {
  DEIMG_RETURN_IF_FAILED(ComponentX::AllocateBuffers());
  if (scratchLines_ == 0 || scratch_) return DEIMG_OK;
  scratch_.emplace(0, width(), sampleBytes());
  return scratch_->Allocate(scratchLines_ | 1);
}

Result Stage::Run(int first, int last) {
  for (int offset = first; offset <= last; ++offset) {
    computedOffset_ = offset;
    ComputeLine(offset);
#ifdef DEIMG_CHECK_CONTRACTS
    CheckRanges(offset);
#endif
  }
  return DEIMG_OK;
}

void Stage::CheckRead(const ComponentX& source, int port, int offset) const {
  const int away = std::abs(offset - computedOffset_);
  if (away > border() / 2 || source.GetLine(offset, port) == nullptr) {
    Break(*this, source, "reads", port, offset);
  }
}

void Stage::CheckWrite(int port, int offset) const {
  if (offset != computedOffset_ || GetLine(offset, port) == nullptr) {
    Break(*this, *this, "writes", port, offset);
  }
}

void Stage::CheckRanges(int offset) const {
  const auto check = [&](int p, const auto* line) {
    for (int x = 0; x < width(); ++x) {
      if (port(p)->range().Contains(line[x])) continue;
      std::fprintf(stderr, "sample %d in column %d of %d: ", static_cast<int>(line[x]), x, width());
      Break(*this, *this, "leaves its range in", p, offset);
    }
  };
  for (int p = 0; p < portCount(); ++p) {
    if (port(p)->sampleBytes() == sizeof(Sample)) check(p, GetLine<Sample>(offset, p));
    if (port(p)->sampleBytes() == sizeof(NarrowSample)) check(p, GetLine<NarrowSample>(offset, p));
  }
}

}  // namespace deimg

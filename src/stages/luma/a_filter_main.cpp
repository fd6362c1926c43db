#include "stages/luma/a_filter_main.h"

#include <algorithm>
#include <cstdint>

namespace deimg {
namespace {

constexpr int kSteepestShift = 8;

}  // namespace

AFilterGain MakeAFilterGain(int slopeShift, int coreLevel) {
  const Sample step = 256 >> slopeShift;
  const Sample rampEnd = (step * coreLevel / 8 + AFilterGain::kFull) * 8 / step;
  return {.core = coreLevel, .step = step, .full = std::min(rampEnd, AFilterGain::kLargestSize)};
}

template <typename T>
AFilterMain<T>::AFilterMain(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kAFilterMain), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

template <typename T>
Result AFilterMain<T>::Run(int first, int last) {
  ComponentX* direction = nullptr;
  ComponentX* vertical = nullptr;
  ComponentX* both = nullptr;
  ComponentX* horizontal = nullptr;
  for (int slot = 0; slot < 4; ++slot) {
    ComponentX* const source = input(slot);
    if (source == nullptr) return DEIMG_UNSUPPORTED;
    switch (source->typeId()) {
      case TypeId::kVHDiff:
        direction = source;
        break;
      case TypeId::kVerLpfForAFilter:
        vertical = source;
        break;
      case TypeId::kHorLpfForAFilter:
        both = source;
        break;
      case TypeId::kAFilterHokanLpf:
        horizontal = source;
        break;
      default:
        return DEIMG_UNSUPPORTED;
    }
  }
  if (direction == nullptr || vertical == nullptr || both == nullptr || horizontal == nullptr) {
    return DEIMG_UNSUPPORTED;
  }
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const int slopeShift = tuning_.aFilterSlopeShift(*setIndex);
  if (slopeShift > kSteepestShift) return DEIMG_UNSUPPORTED;
  const AFilterGain gain = MakeAFilterGain(slopeShift, tuning_.aFilterCoreLevel(*setIndex));
  for (int o = first; o <= last; ++o) {
    kernels_.mosaic<T>().aFilterLine(direction->GetLine<T>(o, 0), vertical->GetLine(o, 0),
                                     both->GetLine(o, 0), horizontal->GetLine<T>(o, 0), gain,
                                     width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

template class AFilterMain<NarrowSample>;
template class AFilterMain<Sample>;

}  // namespace deimg

#include "stages/colour/hokan_vh.h"

namespace deimg {

HokanVH::HokanVH(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kHokanVH), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result HokanVH::Run(int first, int last) {
  ComponentX* const mosaic = FirstInput(TypeId::kWhiteBalance);
  ComponentX* const direction = FirstInput(TypeId::kVHDiff);
  if (mosaic == nullptr || direction == nullptr) return DEIMG_MISSING;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const Sample threshold = tuning_.directionThreshold(*setIndex);
  for (int o = first; o <= last; ++o) {
    const PlaneLines out{OwnLine(o, 0), OwnLine(o, 1), OwnLine(o, 2), OwnLine(o, 3)};
    kernels_.interpolateMosaicLine(mosaic->GetLine(o - 1, 0), mosaic->GetLine(o, 0),
                                   mosaic->GetLine(o + 1, 0), IsOddAt(o), width(), out);
    kernels_.exchangeGreensLine(direction->GetLine(o, 0), threshold, width(), out.gr, out.gb);
  }
  return DEIMG_OK;
}

}  // namespace deimg

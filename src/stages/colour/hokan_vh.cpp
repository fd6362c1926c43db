#include "stages/colour/hokan_vh.h"

namespace deimg {

template <typename T>
HokanVH<T>::HokanVH(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kHokanVH), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

template <typename T>
Result HokanVH<T>::Run(int first, int last) {
  ComponentX* const mosaic = FirstInput(TypeId::kWhiteBalance);
  ComponentX* const direction = FirstInput(TypeId::kVHDiff);
  if (mosaic == nullptr || direction == nullptr) return DEIMG_MISSING;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const Sample threshold = tuning_.directionThreshold(*setIndex);
  const auto& kernels = kernels_.mosaic<T>();
  for (int o = first; o <= last; ++o) {
    const PlaneLines<T> out{OwnLine<T>(o, 0), OwnLine<T>(o, 1), OwnLine<T>(o, 2), OwnLine<T>(o, 3)};
    kernels.interpolateMosaicLine(mosaic->GetLine<T>(o - 1, 0), mosaic->GetLine<T>(o, 0),
                                  mosaic->GetLine<T>(o + 1, 0), IsOddAt(o), width(), out);
    kernels.exchangeGreensLine(direction->GetLine<T>(o, 0), threshold, width(), out.gr, out.gb);
  }
  return DEIMG_OK;
}

template class HokanVH<NarrowSample>;
template class HokanVH<Sample>;

}  // namespace deimg

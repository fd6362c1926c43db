#include "stages/colour/vh_diff.h"

namespace deimg {

template <typename T>
VHDiff<T>::VHDiff(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kVHDiff), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings) {}

template <typename T>
Result VHDiff<T>::Run(int first, int last) {
  if (!settings_.setIndex()) return DEIMG_UNSUPPORTED;
  ComponentX* const mosaic = input(0);
  if (mosaic == nullptr) return DEIMG_MISSING;
  for (int o = first; o <= last; ++o) {
    kernels_.mosaic<T>().directionMeasureLine(
        mosaic->GetLine<T>(o - 2, 0), mosaic->GetLine<T>(o - 1, 0), mosaic->GetLine<T>(o, 0),
        mosaic->GetLine<T>(o + 1, 0), mosaic->GetLine<T>(o + 2, 0), width(), OwnLine<T>(o, 0));
  }
  return DEIMG_OK;
}

template class VHDiff<NarrowSample>;
template class VHDiff<Sample>;

}  // namespace deimg

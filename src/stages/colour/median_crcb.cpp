#include "stages/colour/median_crcb.h"

namespace deimg {
template <typename T>
MedianCrCb<T>::MedianCrCb(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kMedianCrCb), context.width, context.height, 4, 3),
      kernels_(context.kernels),
      filter_(!context.settings.medianOff()) {}

template <typename T>
Result MedianCrCb<T>::Run(int first, int last) {
  ComponentX* const differences = FirstInput(TypeId::kHokanCircuit);
  if (differences == nullptr) return DEIMG_MISSING;
  if (!filter_) return DEIMG_OK;
  constexpr int kRedMinusGreen = 0;
  constexpr int kBlueMinusGreen = 3;
  for (int o = first; o <= last; ++o) {
    for (const int port : {kRedMinusGreen, kBlueMinusGreen}) {
      kernels_.mosaic<T>().medianLine(
          differences->GetLine<T>(o - 1, port), differences->GetLine<T>(o, port),
          differences->GetLine<T>(o + 1, port), width(), Scratch<T>(0), Scratch<T>(1),
          Scratch<T>(2), OwnLine<T>(o, port == kRedMinusGreen ? 0 : 1));
    }
  }
  return DEIMG_OK;
}

template class MedianCrCb<NarrowSample>;
template class MedianCrCb<Sample>;

}  // namespace deimg

#include "stages/luma/ramen_to_ymix.h"

namespace deimg {

template <typename T>
RamenToYmix<T>::RamenToYmix(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kRamenToYmix), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning),
      weights_(context.tables.luminanceWeights) {}

template <typename T>
Result RamenToYmix<T>::Run(int first, int last) {
  ComponentX* const luminance = LastInput(TypeId::kHorLpfForAFilter);
  ComponentX* const detail = LastInput(TypeId::kAFilterMain);
  if (luminance == nullptr || detail == nullptr) return DEIMG_UNSUPPORTED;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  ComponentX* const planes = FirstInput(TypeId::kHokanVH);
  if (planes == nullptr) return DEIMG_UNSUPPORTED;
  const Sample gain = tuning_.detailGainLow(*setIndex);
  const Sample mixGain = tuning_.detailGainMix(*setIndex);
  const Sample pedestal = 8 * (tuning_.luminancePedestal() / 2);
  for (int o = first; o <= last; ++o) {
    kernels_.addDetailLine(luminance->GetLine(o, 0), detail->GetLine(o, 0), gain, mixGain, width(),
                           OwnLine(o, 0), OwnLine(o, 1));
    kernels_.mosaic<T>().mixLine(planes->GetLine<T>(o, 0), planes->GetLine<T>(o, 3),
                                 weights_.data(), pedestal, width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

template class RamenToYmix<NarrowSample>;
template class RamenToYmix<Sample>;

}  // namespace deimg

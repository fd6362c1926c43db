#include "stages/luma/a_filter_hokan_lpf.h"

#include <algorithm>
#include <iterator>

namespace deimg {
namespace {

/// Selectors that the camera knows; all of them stand for the same weights.
constexpr int kSelectors[] = {24, 33, 42, 55, 98, 111, 116, 125, 128};

}  // namespace

template <typename T>
AFilterHokanLpf<T>::AFilterHokanLpf(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kAFilterHokanLpf), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

template <typename T>
Result AFilterHokanLpf<T>::Run(int first, int last) {
  ComponentX* const mosaic = input(0);
  if (mosaic == nullptr || mosaic->typeId() != TypeId::kWhiteBalance) return DEIMG_UNSUPPORTED;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const int selector = tuning_.hokanLpfSelect(*setIndex);
  if (std::find(std::begin(kSelectors), std::end(kSelectors), selector) == std::end(kSelectors)) {
    return DEIMG_UNSUPPORTED;
  }
  const auto& kernels = kernels_.mosaic<T>();
  for (int o = first; o <= last; ++o) {
    // Green lies on the even columns of odd lines and on the odd columns of even ones.
    const auto spreadLine =
        IsOddAt(o) ? kernels.spreadEvenColumnsLine : kernels.spreadOddColumnsLine;
    spreadLine(mosaic->GetLine<T>(o, 0), width(), OwnLine<T>(o, 0));
  }
  return DEIMG_OK;
}

template class AFilterHokanLpf<NarrowSample>;
template class AFilterHokanLpf<Sample>;

}  // namespace deimg

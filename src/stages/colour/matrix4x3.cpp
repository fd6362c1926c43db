#include "stages/colour/matrix4x3.h"

namespace deimg {
namespace {

/// Used for plain processing.
// clang-format off
constexpr ColourMatrix kBuiltInMatrix = {
     717, -717, -113,  113,
     307,  205,  113,  399,
    -307,  307,  911, -911,
};
// clang-format on

}  // namespace

template <typename T>
Matrix4x3<T>::Matrix4x3(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kMatrix4x3), context.width, context.height, 4),
      kernels_(context.kernels),
      coefficients_(context.settings.plain() ? kBuiltInMatrix : context.tables.colourMatrix),
      fromPlanes_(context.settings.medianOff()) {}

template <typename T>
Result Matrix4x3<T>::Run(int first, int last) {
  ComponentX* const planes = LastInput(TypeId::kHokanVH);
  ComponentX* const median = LastInput(TypeId::kMedianCrCb);
  if (planes == nullptr || median == nullptr) return DEIMG_MISSING;
  const auto& m = coefficients_;
  const auto& kernels = kernels_.mosaic<T>();
  for (int o = first; o <= last; ++o) {
    const T* const r = planes->GetLine<T>(o, 0);
    const T* const gr = planes->GetLine<T>(o, 1);
    const T* const gb = planes->GetLine<T>(o, 2);
    const T* const b = planes->GetLine<T>(o, 3);
    kernels.matrixRowLine(r, gr, b, gb, &m[4], width(), OwnLine(o, 0));
    if (fromPlanes_) {
      kernels.matrixRowLine(r, gr, b, gb, &m[0], width(), OwnLine(o, 1));
      kernels.matrixRowLine(r, gr, b, gb, &m[8], width(), OwnLine(o, 2));
    } else {
      const T* const cr = median->GetLine<T>(o, 0);
      const T* const cb = median->GetLine<T>(o, 1);
      kernels.matrixPairLine(cr, cb, m[0], m[2], width(), OwnLine(o, 1));
      kernels.matrixPairLine(cr, cb, m[8], m[10], width(), OwnLine(o, 2));
    }
  }
  return DEIMG_OK;
}

template class Matrix4x3<NarrowSample>;
template class Matrix4x3<Sample>;

}  // namespace deimg

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

Matrix4x3::Matrix4x3(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kMatrix4x3), context.width, context.height, 4),
      kernels_(context.kernels),
      coefficients_(context.settings.plain() ? kBuiltInMatrix : context.tables.colourMatrix),
      fromPlanes_(context.settings.medianOff()) {}

Result Matrix4x3::Run(int first, int last) {
  ComponentX* const planes = LastInput(TypeId::kHokanVH);
  ComponentX* const median = LastInput(TypeId::kMedianCrCb);
  if (planes == nullptr || median == nullptr) return DEIMG_MISSING;
  const auto& m = coefficients_;
  for (int o = first; o <= last; ++o) {
    const Sample* const r = planes->GetLine(o, 0);
    const Sample* const gr = planes->GetLine(o, 1);
    const Sample* const gb = planes->GetLine(o, 2);
    const Sample* const b = planes->GetLine(o, 3);
    kernels_.matrixRowLine(r, gr, b, gb, &m[4], width(), OwnLine(o, 0));
    if (fromPlanes_) {
      kernels_.matrixRowLine(r, gr, b, gb, &m[0], width(), OwnLine(o, 1));
      kernels_.matrixRowLine(r, gr, b, gb, &m[8], width(), OwnLine(o, 2));
    } else {
      const Sample* const cr = median->GetLine(o, 0);
      const Sample* const cb = median->GetLine(o, 1);
      kernels_.matrixPairLine(cr, cb, m[0], m[2], width(), OwnLine(o, 1));
      kernels_.matrixPairLine(cr, cb, m[8], m[10], width(), OwnLine(o, 2));
    }
  }
  return DEIMG_OK;
}

}  // namespace deimg

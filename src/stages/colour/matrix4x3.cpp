#include "stages/colour/matrix4x3.h"

namespace deimg {
namespace {

constexpr Sample kOne = 2048;

/// Used for plain processing.
// clang-format off
constexpr ColourMatrix kBuiltInMatrix = {
     717, -717, -113,  113,
     307,  205,  113,  399,
    -307,  307,  911, -911,
};
// clang-format on

}  // namespace

void MatrixRowLine(Line r, Line gr, Line b, Line gb, const std::int16_t (&row)[4], int width,
                   MutableLine out) {
  const Sample m0 = row[0], m1 = row[1], m2 = row[2], m3 = row[3];
  for (int x = 0; x < width; ++x) {
    out[x] = (r[x] * m0 + gr[x] * m1 + b[x] * m2 + gb[x] * m3) / kOne;
  }
}

void MatrixRowLine(Line redMinusGreen, Line blueMinusGreen, const std::int16_t (&row)[2], int width,
                   MutableLine out) {
  const Sample mRed = row[0], mBlue = row[1];
  for (int x = 0; x < width; ++x) {
    out[x] = (redMinusGreen[x] * mRed + blueMinusGreen[x] * mBlue) / kOne;
  }
}

Matrix4x3::Matrix4x3(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kMatrix4x3), context.width, context.height, 4),
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
    MatrixRowLine(r, gr, b, gb, {m[4], m[5], m[6], m[7]}, width(), OwnLine(o, 0));
    if (fromPlanes_) {
      MatrixRowLine(r, gr, b, gb, {m[0], m[1], m[2], m[3]}, width(), OwnLine(o, 1));
      MatrixRowLine(r, gr, b, gb, {m[8], m[9], m[10], m[11]}, width(), OwnLine(o, 2));
    } else {
      const Sample* const cr = median->GetLine(o, 0);
      const Sample* const cb = median->GetLine(o, 1);
      MatrixRowLine(cr, cb, {m[0], m[2]}, width(), OwnLine(o, 1));
      MatrixRowLine(cr, cb, {m[8], m[10]}, width(), OwnLine(o, 2));
    }
  }
  return DEIMG_OK;
}

}  // namespace deimg

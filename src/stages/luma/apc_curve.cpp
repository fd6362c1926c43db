#include "stages/luma/apc_curve.h"

#include <algorithm>

#include "graph/rounding.h"

namespace deimg {
namespace {

double SlopeOf(std::int16_t code) {
  constexpr double kSlopes[] = {0.375, 0.5, 0.625, 0.0, 0.75, 1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};
  return code >= 0 && code < 12 ? kSlopes[code] : 0.0;
}

}  // namespace

Result ApcCurve::Build(const ApcCurveParams& params, int size) {
  table_ = BlockOf<Sample>::Zeroed(static_cast<std::uint64_t>(size));
  if (!table_) return DEIMG_OUT_OF_MEMORY;
  size_ = size;
  const int knee1 = params[0] * 4;
  const int knee2 = params[1] * 4;
  // The later segment takes the entry at the knee that two share.
  const auto fill = [&](int first, int last, double slope, std::int16_t offset) {
    for (int i = std::max(first, 0); i <= std::min(last, size - 1); ++i) {
      const std::int16_t magnitude = Signed16(Truncated((i * slope + offset) * 8));
      table_[static_cast<std::size_t>(i)] = std::max<std::int16_t>(magnitude, 0);
    }
  };
  fill(0, knee1, SlopeOf(params[2]) / 4, params[5]);
  fill(knee1, knee2, SlopeOf(params[3]) / 4, params[6]);
  fill(knee2, size - 1, SlopeOf(params[4]) / 2048, params[7]);
  return DEIMG_OK;
}

void ApcCurve::Apply(const Kernels& kernels, int shift, int width, Sample* line) const {
  kernels.apcCurveLine(table_.get(), size_ - 1, shift, width, line);
}

}  // namespace deimg

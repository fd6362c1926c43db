#include "stages/colour/vh_diff.h"

#include <cstdlib>

namespace deimg {

void DirectionMeasureLine(Line u2, Line u1, Line m, Line d1, Line d2, int width, MutableLine out) {
  out[0] = out[1] = out[width - 2] = out[width - 1] = 0;
  for (int x = 2; x < width - 2; ++x) {
    const Sample horizontal =
        std::abs(2 * m[x] - m[x - 2] - m[x + 2]) + std::abs(m[x - 1] - m[x + 1]);
    const Sample vertical = std::abs(2 * m[x] - u2[x] - d2[x]) + std::abs(u1[x] - d1[x]);
    out[x] = vertical - horizontal;
  }
}

VHDiff::VHDiff(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kVHDiff), context.width, context.height, 4),
      settings_(context.settings) {}

Result VHDiff::Run(int first, int last) {
  if (!settings_.setIndex()) return DEIMG_UNSUPPORTED;
  ComponentX* const mosaic = input(0);
  if (mosaic == nullptr) return DEIMG_MISSING;
  for (int o = first; o <= last; ++o) {
    DirectionMeasureLine(mosaic->GetLine(o - 2, 0), mosaic->GetLine(o - 1, 0),
                         mosaic->GetLine(o, 0), mosaic->GetLine(o + 1, 0),
                         mosaic->GetLine(o + 2, 0), width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

#include "stages/colour/vh_diff.h"

#include <cstdlib>

namespace deimg {

VHDiff::VHDiff(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kVHDiff), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings) {}

Result VHDiff::Run(int first, int last) {
  if (!settings_.setIndex()) return DEIMG_UNSUPPORTED;
  ComponentX* const mosaic = input(0);
  if (mosaic == nullptr) return DEIMG_MISSING;
  for (int o = first; o <= last; ++o) {
    kernels_.directionMeasureLine(mosaic->GetLine(o - 2, 0), mosaic->GetLine(o - 1, 0),
                                  mosaic->GetLine(o, 0), mosaic->GetLine(o + 1, 0),
                                  mosaic->GetLine(o + 2, 0), width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

#include "stages/colour/median_crcb.h"

#include <algorithm>

namespace deimg {
MedianCrCb::MedianCrCb(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kMedianCrCb), context.width, context.height, 4, 3),
      kernels_(context.kernels),
      filter_(!context.settings.medianOff()) {}

Result MedianCrCb::Run(int first, int last) {
  ComponentX* const differences = FirstInput(TypeId::kHokanCircuit);
  if (differences == nullptr) return DEIMG_MISSING;
  if (!filter_) return DEIMG_OK;
  constexpr int kRedMinusGreen = 0;
  constexpr int kBlueMinusGreen = 3;
  for (int o = first; o <= last; ++o) {
    for (const int port : {kRedMinusGreen, kBlueMinusGreen}) {
      kernels_.medianLine(differences->GetLine(o - 1, port), differences->GetLine(o, port),
                          differences->GetLine(o + 1, port), width(), Scratch(0), Scratch(1),
                          Scratch(2), OwnLine(o, port == kRedMinusGreen ? 0 : 1));
    }
  }
  return DEIMG_OK;
}

}  // namespace deimg

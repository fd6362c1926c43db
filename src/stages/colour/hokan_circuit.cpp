#include "stages/colour/hokan_circuit.h"

#include <cstdlib>

namespace deimg {

HokanCircuit::HokanCircuit(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kHokanCircuit), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result HokanCircuit::Run(int first, int last) {
  ComponentX* const mosaic = FirstInput(TypeId::kWhiteBalance);
  if (mosaic == nullptr) return DEIMG_MISSING;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  ComponentX* const direction = FirstInput(TypeId::kVHDiff);
  if (direction == nullptr) return DEIMG_MISSING;
  if (settings_.medianOff()) return DEIMG_OK;  // nobody reads the differences then
  const Sample threshold = tuning_.directionThreshold(*setIndex);
  const bool choose = tuning_.greenChoiceEnable() != 0;
  for (int o = first; o <= last; ++o) {
    const PlaneLines out{OwnLine(o, 0), OwnLine(o, 1), OwnLine(o, 2), OwnLine(o, 3)};
    kernels_.interpolateMosaicLine(mosaic->GetLine(o - 1, 0), mosaic->GetLine(o, 0),
                                   mosaic->GetLine(o + 1, 0), IsOddAt(o), width(), out);
    kernels_.colourDifferenceLine(direction->GetLine(o, 0), threshold, choose, out.gr, out.gb,
                                  width(), out.r, out.b);
  }
  return DEIMG_OK;
}

}  // namespace deimg

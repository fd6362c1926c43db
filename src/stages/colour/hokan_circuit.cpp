#include "stages/colour/hokan_circuit.h"

namespace deimg {

template <typename T>
HokanCircuit<T>::HokanCircuit(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kHokanCircuit), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

template <typename T>
Result HokanCircuit<T>::Run(int first, int last) {
  ComponentX* const mosaic = FirstInput(TypeId::kWhiteBalance);
  if (mosaic == nullptr) return DEIMG_MISSING;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  ComponentX* const direction = FirstInput(TypeId::kVHDiff);
  if (direction == nullptr) return DEIMG_MISSING;
  if (settings_.medianOff()) return DEIMG_OK;  // nobody reads the differences then
  const Sample threshold = tuning_.directionThreshold(*setIndex);
  const bool choose = tuning_.greenChoiceEnable() != 0;
  const auto& kernels = kernels_.mosaic<T>();
  for (int o = first; o <= last; ++o) {
    const PlaneLines<T> out{OwnLine<T>(o, 0), OwnLine<T>(o, 1), OwnLine<T>(o, 2), OwnLine<T>(o, 3)};
    kernels.interpolateMosaicLine(mosaic->GetLine<T>(o - 1, 0), mosaic->GetLine<T>(o, 0),
                                  mosaic->GetLine<T>(o + 1, 0), IsOddAt(o), width(), out);
    kernels.colourDifferenceLine(direction->GetLine<T>(o, 0), threshold, choose, out.gr, out.gb,
                                 width(), out.r, out.b);
  }
  return DEIMG_OK;
}

template class HokanCircuit<NarrowSample>;
template class HokanCircuit<Sample>;

}  // namespace deimg

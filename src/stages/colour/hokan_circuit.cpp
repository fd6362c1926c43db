#include "stages/colour/hokan_circuit.h"

#include <cstdlib>

#include "stages/colour/mosaic_interpolation.h"

namespace deimg {

void ColourDifferenceLine(Line direction, Sample threshold, bool choose, Line gr, Line gb,
                          int width, MutableLine red, MutableLine blue) {
  for (int x = 0; x < width; ++x) {
    const Sample average = (gr[x] + gb[x]) / 2;
    const Sample averageRed = red[x] - average;
    const Sample averageBlue = blue[x] - average;
    const bool exchange = choose && direction[x] < -threshold;
    const Sample directedRed = red[x] - (exchange ? gb[x] : gr[x]);
    const Sample directedBlue = blue[x] - (exchange ? gr[x] : gb[x]);
    const bool useAverage = std::abs(directedRed) + std::abs(directedBlue) >
                            std::abs(averageRed) + std::abs(averageBlue);
    red[x] = useAverage ? averageRed : directedRed;
    blue[x] = useAverage ? averageBlue : directedBlue;
  }
}

HokanCircuit::HokanCircuit(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kHokanCircuit), context.width, context.height, 4, 2),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result HokanCircuit::Run(int first, int last) {
  ComponentX* const mosaic = FirstInput(TypeId::kWhiteBalance);
  if (mosaic == nullptr) return DEIMG_MISSING;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  ComponentX* const direction = FirstInput(TypeId::kVHDiff);
  if (direction == nullptr) return DEIMG_MISSING;
  const Sample threshold = tuning_.directionThreshold(*setIndex);
  const bool choose = tuning_.greenChoiceEnable() != 0;
  for (int o = first; o <= last; ++o) {
    const PlaneLines out{OwnLine(o, 0), OwnLine(o, 1), OwnLine(o, 2), OwnLine(o, 3)};
    InterpolateMosaicLine(mosaic->GetLine(o - 1, 0), mosaic->GetLine(o, 0),
                          mosaic->GetLine(o + 1, 0), IsOddAt(o), width(), Scratch(0), Scratch(1),
                          out);
    ColourDifferenceLine(direction->GetLine(o, 0), threshold, choose, out.gr, out.gb, width(),
                         out.r, out.b);
  }
  return DEIMG_OK;
}

}  // namespace deimg

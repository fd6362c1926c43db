/// Red minus green and blue minus green at every sample.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_H
#define DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Interpolates the mosaic and takes from red and blue either the average green or the green that
/// the direction suggests, whichever leaves the smaller differences.
///
/// Inputs: VHDiff; White Balance, three lines. Output: port 0 red minus green, ports 1 and 2 the
/// green planes, port 3 blue minus green; four times the mosaic's scale.
class HokanCircuit final : public ComponentX {
 public:
  explicit HokanCircuit(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

/// Replaces red and blue by their differences from green. The greens change roles where the
/// direction is below -threshold and `choose` is set. A tie goes to the greens of the direction.
void ColourDifferenceLine(Line direction, Sample threshold, bool choose, Line gr, Line gb,
                          int width, MutableLine red, MutableLine blue);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_H

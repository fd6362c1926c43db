/// Bilinear interpolation of the colour mosaic, shared by the stages that need full planes.
#ifndef DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_H
#define DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_H

#include "graph/line.h"

namespace deimg {

/// Fills a line from the samples of its even (odd) columns: they are doubled, the columns between
/// get the sum of both neighbours; at the end of the line the one neighbour counts twice. The
/// output has twice the scale of the input. `width` is even.
void SpreadEvenColumnsLine(Line in, int width, MutableLine out);
void SpreadOddColumnsLine(Line in, int width, MutableLine out);

/// The four colour planes of one line.
struct PlaneLines {
  Sample* r;
  Sample* gr;  // green from the greens of red lines
  Sample* gb;  // green from the greens of blue lines
  Sample* b;
};

/// Interpolates one line of the mosaic into four planes at four times its scale; `above`, `centre`
/// and `below` are mosaic lines. First down the columns: colours of the line itself are doubled,
/// those of its neighbours added; then along the line. The two scratch lines hold the first step.
void InterpolateMosaicLine(const Sample* above, const Sample* centre, const Sample* below,
                           bool oddLine, int width, Sample* scratch0, Sample* scratch1,
                           const PlaneLines& out);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_H

/// Kernels of the bilinear interpolation of the mosaic, shared by the stages that need full planes.
#ifndef DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_KERNELS_H
#define DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/kernels.h"
#include "graph/line.h"

namespace deimg {

static void DoubleLine(Line in, int width, MutableLine out) {
  for (Index x = 0; x < width; ++x) out[x] = 2 * in[x];
}

static void AddLines(Line a, Line b, int width, MutableLine out) {
  for (Index x = 0; x < width; ++x) out[x] = a[x] + b[x];
}

/// Fills a line from the samples of its even (odd) columns: they are doubled, the columns between
/// get the sum of both neighbours; at the end of the line the one neighbour counts twice. The
/// output has twice the scale of the input. `width` is even.
static void SpreadEvenColumnsLine(Line in, int width, MutableLine out) {
  for (Index x = 1; x < width - 1; ++x) out[x] = x % 2 == 0 ? 2 * in[x] : in[x - 1] + in[x + 1];
  out[0] = 2 * in[0];
  out[width - 1] = 2 * in[width - 2];
}

static void SpreadOddColumnsLine(Line in, int width, MutableLine out) {
  for (Index x = 1; x < width - 1; ++x) out[x] = x % 2 != 0 ? 2 * in[x] : in[x - 1] + in[x + 1];
  out[0] = 2 * in[1];
  out[width - 1] = 2 * in[width - 1];
}

/// Interpolates one line of the mosaic into four planes at four times its scale; `above`, `centre`
/// and `below` are mosaic lines. First down the columns: colours of the line itself are doubled,
/// those of its neighbours added; then along the line. The two scratch lines hold the first step.
static void InterpolateMosaicLine(const Sample* above, const Sample* centre, const Sample* below,
                                  bool oddLine, int width, Sample* scratch0, Sample* scratch1,
                                  const PlaneLines& out) {
  // Red lines hold red and Gr; the lines around them Gb and blue. For blue lines it is the reverse.
  Sample* const redLines = scratch0;
  Sample* const blueLines = scratch1;
  DoubleLine(centre, width, oddLine ? blueLines : redLines);
  AddLines(above, below, width, oddLine ? redLines : blueLines);
  SpreadEvenColumnsLine(redLines, width, out.r);
  SpreadOddColumnsLine(redLines, width, out.gr);
  SpreadEvenColumnsLine(blueLines, width, out.gb);
  SpreadOddColumnsLine(blueLines, width, out.b);
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_KERNELS_H

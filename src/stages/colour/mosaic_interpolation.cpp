#include "stages/colour/mosaic_interpolation.h"

namespace deimg {
namespace {

void DoubleLine(Line in, int width, MutableLine out) {
  for (int x = 0; x < width; ++x) out[x] = 2 * in[x];
}

void AddLines(Line a, Line b, int width, MutableLine out) {
  for (int x = 0; x < width; ++x) out[x] = a[x] + b[x];
}

}  // namespace

void SpreadEvenColumnsLine(Line in, int width, MutableLine out) {
  for (int x = 0; x < width - 2; x += 2) {
    out[x] = 2 * in[x];
    out[x + 1] = in[x] + in[x + 2];
  }
  out[width - 2] = out[width - 1] = 2 * in[width - 2];
}

void SpreadOddColumnsLine(Line in, int width, MutableLine out) {
  out[0] = out[1] = 2 * in[1];
  for (int x = 2; x < width; x += 2) {
    out[x] = in[x - 1] + in[x + 1];
    out[x + 1] = 2 * in[x + 1];
  }
}

void InterpolateMosaicLine(const Sample* above, const Sample* centre, const Sample* below,
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

/// Kernels of the bilinear interpolation of the mosaic, shared by the stages that need full planes.
#ifndef DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_KERNELS_H
#define DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/kernels.h"
#include "graph/line.h"

namespace deimg {

/// Fills a line from the samples of its even (odd) columns: they are doubled, the columns between
/// get the sum of both neighbours; at the end of the line the one neighbour counts twice. The
/// output has twice the scale of the input. `width` is even.
template <typename T>
static void SpreadEvenColumnsLine(LineOf<T> in, int width, MutableLineOf<T> out) {
  ColumnOf<T> column = 1;
  for (Index x = 1; x < width - 1; ++x, ++column) {
    out[x] = ByParity<T>(column, static_cast<T>(2 * in[x]), static_cast<T>(in[x - 1] + in[x + 1]));
  }
  out[0] = static_cast<T>(2 * in[0]);
  out[width - 1] = static_cast<T>(2 * in[width - 2]);
}

template <typename T>
static void SpreadOddColumnsLine(LineOf<T> in, int width, MutableLineOf<T> out) {
  ColumnOf<T> column = 1;
  for (Index x = 1; x < width - 1; ++x, ++column) {
    out[x] = ByParity<T>(column, static_cast<T>(in[x - 1] + in[x + 1]), static_cast<T>(2 * in[x]));
  }
  out[0] = static_cast<T>(2 * in[1]);
  out[width - 1] = static_cast<T>(2 * in[width - 1]);
}

/// The planes of the two colours on the line itself: of its even and of its odd columns.
template <typename T>
static inline void InterpolateOwnColoursLine(LineOf<T> centre, int width, MutableLineOf<T> even,
                                             MutableLineOf<T> odd) {
  ColumnOf<T> column = 1;
  for (Index x = 1; x < width - 1; ++x, ++column) {
    const auto here = static_cast<T>(4 * centre[x]);
    const auto beside = static_cast<T>(2 * (centre[x - 1] + centre[x + 1]));
    even[x] = ByParity<T>(column, here, beside);
    odd[x] = ByParity<T>(column, beside, here);
  }
  even[0] = static_cast<T>(4 * centre[0]);
  odd[0] = static_cast<T>(4 * centre[1]);
  even[width - 1] = static_cast<T>(4 * centre[width - 2]);
  odd[width - 1] = static_cast<T>(4 * centre[width - 1]);
}

/// The planes of the two colours that the lines above and below have.
template <typename T>
static inline void InterpolateOtherColoursLine(LineOf<T> above, LineOf<T> below, int width,
                                               MutableLineOf<T> even, MutableLineOf<T> odd) {
  ColumnOf<T> column = 1;
  for (Index x = 1; x < width - 1; ++x, ++column) {
    const auto here = static_cast<T>(2 * (above[x] + below[x]));
    const auto beside = static_cast<T>(above[x - 1] + below[x - 1] + above[x + 1] + below[x + 1]);
    even[x] = ByParity<T>(column, here, beside);
    odd[x] = ByParity<T>(column, beside, here);
  }
  even[0] = static_cast<T>(2 * (above[0] + below[0]));
  odd[0] = static_cast<T>(2 * (above[1] + below[1]));
  even[width - 1] = static_cast<T>(2 * (above[width - 2] + below[width - 2]));
  odd[width - 1] = static_cast<T>(2 * (above[width - 1] + below[width - 1]));
}

/// Interpolates one line of the mosaic bilinearly into four planes at four times its scale;
/// `above`, `centre` and `below` are mosaic lines.
template <typename T>
static void InterpolateMosaicLine(const T* above, const T* centre, const T* below, bool oddLine,
                                  int width, const PlaneLines<T>& out) {
  // Red lines hold red and Gr, blue lines Gb and blue.
  if (oddLine) {
    InterpolateOwnColoursLine(centre, width, out.gb, out.b);
    InterpolateOtherColoursLine(above, below, width, out.r, out.gr);
  } else {
    InterpolateOwnColoursLine(centre, width, out.r, out.gr);
    InterpolateOtherColoursLine(above, below, width, out.gb, out.b);
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_KERNELS_H

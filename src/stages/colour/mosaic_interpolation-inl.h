/// Bilinear interpolation of the mosaic, shared by the stages that need full planes.
#ifndef DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_INL_H
#define DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_INL_H

#include "line/arithmetic.h"

namespace deimg::DEIMG_LEVEL {

/// The four colour planes of one line.
template <typename T>
struct PlaneLines {
  T* r;
  T* gr;  // green from the greens of red lines
  T* gb;  // green from the greens of blue lines
  T* b;
};

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
/// `above`, `centre` and `below` are mosaic lines. Edge columns repeat; `width` is even.
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

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_INL_H

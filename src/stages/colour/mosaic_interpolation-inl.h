/// Bilinear interpolation of the mosaic, shared by the stages that need full planes.
#ifndef DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_INL_H
#define DEIMG_STAGES_COLOUR_MOSAIC_INTERPOLATION_INL_H

#include "line/lanes-inl.h"
#include "line/range.h"

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
  ForColumns<T>(2, width - 2, [=]<int n>(LaneCount<n>, Index x) {
    const auto here = Load<n>(centre + x) << 2;
    const auto beside = (Load<n>(centre + x - 1) + Load<n>(centre + x + 1)) << 1;
    Store(even + x, ByColumnParity(x, here, beside));
    Store(odd + x, ByColumnParity(x, beside, here));
  });
  const Index last = width - 1;
  const auto four = [=](Index x) { return static_cast<T>(4 * centre[x]); };
  const auto beside = [=](Index x) { return static_cast<T>(2 * (centre[x - 1] + centre[x + 1])); };
  even[0] = four(0);
  odd[0] = four(1);
  even[1] = beside(1);
  odd[1] = four(1);
  even[last - 1] = four(last - 1);
  odd[last - 1] = beside(last - 1);
  even[last] = four(last - 1);
  odd[last] = four(last);
}

/// The planes of the two colours that the lines above and below have.
template <typename T>
static inline void InterpolateOtherColoursLine(LineOf<T> above, LineOf<T> below, int width,
                                               MutableLineOf<T> even, MutableLineOf<T> odd) {
  ForColumns<T>(2, width - 2, [=]<int n>(LaneCount<n>, Index x) {
    const auto pair = [=](Index column) {
      return Load<n>(above + column) + Load<n>(below + column);
    };
    const auto here = pair(x) << 1, beside = pair(x - 1) + pair(x + 1);
    Store(even + x, ByColumnParity(x, here, beside));
    Store(odd + x, ByColumnParity(x, beside, here));
  });
  const Index last = width - 1;
  const auto twice = [=](Index x) { return static_cast<T>(2 * (above[x] + below[x])); };
  const auto beside = [=](Index x) {
    return static_cast<T>(above[x - 1] + below[x - 1] + above[x + 1] + below[x + 1]);
  };
  even[0] = twice(0);
  odd[0] = twice(1);
  even[1] = beside(1);
  odd[1] = twice(1);
  even[last - 1] = twice(last - 1);
  odd[last - 1] = beside(last - 1);
  even[last] = twice(last - 1);
  odd[last] = twice(last);
}

/// The range of the planes of a mosaic.
static inline Range PlaneRange(Range mosaic) { return 4 * mosaic; }

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

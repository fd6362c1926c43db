/// Kernels of the stage in matrix4x3.h.
#ifndef DEIMG_STAGES_COLOUR_MATRIX4X3_KERNELS_H
#define DEIMG_STAGES_COLOUR_MATRIX4X3_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Coefficients have this value for a factor of 1.
static constexpr Sample kMatrixOne = 2048;

/// One row of the matrix on four planes.
template <typename T>
static void MatrixRowLine(LineOf<T> r, LineOf<T> gr, LineOf<T> b, LineOf<T> gb,
                          const std::int16_t* row, int width, MutableLine out) {
  const Sample m0 = row[0], m1 = row[1], m2 = row[2], m3 = row[3];
  for (Index x = 0; x < width; ++x) {
    out[x] = (r[x] * m0 + gr[x] * m1 + b[x] * m2 + gb[x] * m3) / kMatrixOne;
  }
}

/// The red and blue coefficients of a row on the two colour differences.
template <typename T>
static void MatrixPairLine(LineOf<T> redMinusGreen, LineOf<T> blueMinusGreen, Sample mRed,
                           Sample mBlue, int width, MutableLine out) {
  for (Index x = 0; x < width; ++x) {
    out[x] = (redMinusGreen[x] * mRed + blueMinusGreen[x] * mBlue) / kMatrixOne;
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MATRIX4X3_KERNELS_H

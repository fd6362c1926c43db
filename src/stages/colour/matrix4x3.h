/// From colour planes to luminance and two colour differences.
#ifndef DEIMG_STAGES_COLOUR_MATRIX4X3_H
#define DEIMG_STAGES_COLOUR_MATRIX4X3_H

#include <array>
#include <cstdint>

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Three rows of four coefficients, 2048 = 1.0: first colour difference, luminance, second colour
/// difference. Columns: red, Gr, blue, Gb.
using ColourMatrix = std::array<std::int16_t, 12>;

/// Applies the colour matrix. Luminance comes from the four planes; the colour differences from the
/// median's, or from the planes too when the median is off.
///
/// Inputs: V/H interpolation, Median CrCb. Output: port 0 luminance, ports 1 and 2 the colour
/// differences, four times the mosaic's scale.
template <typename T>
class Matrix4x3 final : public ComponentX {
 public:
  explicit Matrix4x3(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const ColourMatrix coefficients_;
  const bool fromPlanes_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_MATRIX4X3_H

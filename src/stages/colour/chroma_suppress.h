/// Less colour where the picture is very dark or very bright.
#ifndef DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_H
#define DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_H

#include <array>
#include <cstdint>

#include "graph/component.h"
#include "graph/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

inline constexpr int kSuppressionCurveSize = 1024;

/// Scales both colour differences by a gain that the local brightness selects from a curve, and by
/// a fixed gain each.
///
/// Inputs: the matrix, ports 1 and 2; the low-passed luminance of HorLpf; red and blue of the V/H
/// interpolation. Output: ports 0 and 1, the suppressed colour differences, same scale.
template <typename T>
class ChromaSuppress final : public ComponentX {
 public:
  explicit ChromaSuppress(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  [[nodiscard]] Result BuildTable();

  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const std::array<std::uint16_t, 9> parameters_;
  const Sample gainCr_;
  const Sample gainCb_;
  BlockOf<Sample> suppressTable_;  // gain by level, 128 = 1.0
};

/// Fills the suppression curve from its parameters e0 to e8: a dark ramp, full chroma, and up to
/// three falling segments. DEIMG_UNSUPPORTED for a slope code that does not exist.
[[nodiscard]] Result BuildSuppressionCurve(const std::array<std::uint16_t, 9>& parameters,
                                           Sample* table);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_CHROMA_SUPPRESS_H

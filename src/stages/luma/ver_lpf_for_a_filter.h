/// Vertical low-pass of the green sites.
#ifndef DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_H
#define DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_H

#include <array>
#include <optional>

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Taps t0 to t3 of the symmetric kernel t0 t1 t2 t3 t2 t1 t0.
using VerLpfTaps = std::array<Sample, 4>;

/// Forms at every site a vertically low-passed value of the sites whose line plus column number is
/// odd, the green ones: from themselves and those two lines away (t1 t3 t1), or from those one and
/// three lines away (t0 t2 t2 t0).
///
/// Input: White Balance, seven lines. Output: port 0, four times the mosaic's scale.
template <typename T>
class VerLpfForAFilter final : public ComponentX {
 public:
  explicit VerLpfForAFilter(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
};

/// The kernel of a selector; none for an unknown one.
[[nodiscard]] std::optional<VerLpfTaps> VerLpfTapsOf(int selector);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_VER_LPF_FOR_A_FILTER_H

/// Horizontal low-pass after the vertical one.
#ifndef DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_H
#define DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_H

#include <array>
#include <span>

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Smooths a line with 3, 5, 7 or 9 taps: defaults, or taps and divisor set after construction. The
/// graph uses 1, 2, 1 without a division.
///
/// Input: VerLpf, one line. Output: port 0; in the graph four times the input's scale.
class HorLpfForAFilter final : public ComponentX {
 public:
  static constexpr int kMostTaps = 9;

  HorLpfForAFilter(const StageContext& context, int tapCount);

  /// Sets `tapCount` taps and a divisor, which must not be 0.
  void SetTaps(std::span<const Sample> taps, Sample divisor);

  /// 1 when there is no kernel of `tapCount` taps.
  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const int tapCount_;
  std::array<Sample, kMostTaps> taps_{};
  Sample divisor_ = 0;  // 0: no such kernel
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_HOR_LPF_FOR_A_FILTER_H

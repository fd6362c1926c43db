/// The luminance signal of the picture.
#ifndef DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_H
#define DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_H

#include <array>
#include <cstdint>

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Adds detail to the low-passed luminance, mixes it with smoothed red and blue, and removes a
/// pedestal.
///
/// Inputs: A-Filter, HorLpf (both 16 x the mosaic's scale), V/H interpolation (4 x). Output: port 0
/// the luminance mix, port 1 the low-passed luminance with its detail.
template <typename T>
class RamenToYmix final : public ComponentX {
 public:
  explicit RamenToYmix(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
  const std::array<std::int16_t, 3> weights_;  // red, own, blue; 256 = 1.0
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_H

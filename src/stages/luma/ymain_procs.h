/// The final luminance.
#ifndef DEIMG_STAGES_LUMA_YMAIN_PROCS_H
#define DEIMG_STAGES_LUMA_YMAIN_PROCS_H

#include <array>
#include <cstdint>
#include <optional>

#include "graph/component.h"
#include "graph/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

/// Adds the aperture corrections with a gain that depends on the local brightness, maps the result
/// through the tone curve, and lowers it where the colour differences are strong. Plain processing
/// only scales; quick processing leaves the aperture corrections out.
///
/// Inputs: Ramen to YMIX, port 0; H-APC, ports 0 and 1; R-APC, V-APC, A-APC, port 0; the
/// colour-system stage, ports 1 and 2. Output: port 0, luminance 0 to 8191.
class YMainProcs final : public ComponentX {
 public:
  static constexpr int kToneTableSize = 8192;

  explicit YMainProcs(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  [[nodiscard]] Result PrepareDetail();
  [[nodiscard]] Result PrepareTone();

  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const TuningBlock tuning_;
  std::optional<DetailGain> detailGain_;
  BlockOf<std::int16_t> toneTable_;
};

/// Codes and peak of the detail gain table.
struct DetailGainParams {
  std::uint16_t riseCode;
  std::uint16_t fallCode;
  std::uint16_t endCode;
  std::int16_t peak;
};

/// The gain by level: rises to 16 x peak, holds it, falls to 0; the scale of negative detail is
/// left alone. DEIMG_UNSUPPORTED for a code that does not exist.
[[nodiscard]] Result MakeDetailGain(const DetailGainParams& params, DetailGain& gain);

/// The scale of negative detail, 1024 = 1.0, from its two modes.
[[nodiscard]] Result NegativeScale(std::int16_t modeA, std::int16_t modeB, Sample& scale);

/// The luminance tone curve at i: six quadratic segments from 32 controls; 0 to 8191.
[[nodiscard]] Sample LuminanceToneCurve(Sample i, const TuningBlock::Words<32>& controls);

/// The correction by colour difference, from its parameters p0 to p5.
[[nodiscard]] ChromaCorrection ChromaCorrectionOf(const std::array<std::uint16_t, 7>& parameters);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_YMAIN_PROCS_H

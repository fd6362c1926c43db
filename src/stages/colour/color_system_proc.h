/// Last stage of the colour path: tone curve, chroma gain and hue.
#ifndef DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_H
#define DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_H

#include <array>
#include <cstdint>

#include "graph/component.h"
#include "graph/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

/// Smooths luminance and colour differences along the line, turns them into red, green and blue,
/// removes black offsets, applies the tone curve, and returns to a pair of colour differences,
/// whose strength and hue it adjusts.
///
/// Inputs: Chroma Suppress, ports 0 and 1; the matrix, port 0. Output: port 0 red (working
/// storage), ports 1 and 2 the colour differences Cr and Cb, -4096 to 4095 before the adjustments.
class ColorSystemProc final : public ComponentX {
 public:
  static constexpr int kChromaGainTableSize = 256;

  explicit ColorSystemProc(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

 private:
  [[nodiscard]] Result BuildTables();

  const Kernels& kernels_;
  const DevelopSettings& settings_;
  const DevelopmentTables& tables_;
  const TuningBlock tuning_;
  BlockOf<std::int16_t> rgbToneTable_;
  BlockOf<Sample> chromaGainTable_;  // by chroma / 32, 128 = 1.0
};

/// Fills the chroma gain table from the seven colour gains f0 to f6: gain f0 for weak chroma,
/// through f1 at chroma f2, falling by f4 / 16 after it, and by f6 / 64 less beyond f5.
void BuildChromaGainTable(const std::array<std::int16_t, 7>& f, Sample* table);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_COLOR_SYSTEM_PROC_H

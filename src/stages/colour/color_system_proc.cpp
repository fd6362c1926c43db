#include "stages/colour/color_system_proc.h"

#include <algorithm>

#include "graph/look_up.h"
#include "graph/rounding.h"
#include "stages/colour/rgb_tone_curve.h"

namespace deimg {
void BuildChromaGainTable(const std::array<std::int16_t, 7>& f, Sample* table) {
  const double s1 = -(f[3] / 16.0);
  const double c1 = f[1] - f[2] * s1;
  const int x0 = f[3] == 0 ? 0 : std::max(Truncated((f[0] - c1) / s1), 0);
  const double s2 = -(f[4] / 16.0);
  const double c2 = f[1] - f[2] * s2;
  const double s3 = f[6] / 64.0 + s2;
  const double c3 = Truncated(f[5] * s2 + c2) - f[5] * s3;

  const auto fill = [table](int first, int last, auto value) {
    for (int i = std::max(first, 0); i <= std::min(last, ColorSystemProc::kChromaGainTableSize - 1);
         ++i) {
      table[i] = value(i);
    }
  };
  const int ramp = std::min(x0, ColorSystemProc::kChromaGainTableSize);
  fill(0, ramp, [&](int) { return Sample{f[0]}; });
  fill(ramp + 1, f[2], [&](int i) { return Truncated(i * s1 + c1); });
  fill(f[2] + 1, f[5], [&](int i) { return Truncated(i * s2 + c2); });
  fill(f[5] + 1, ColorSystemProc::kChromaGainTableSize - 1,
       [&](int i) { return Truncated(i * s3 + c3); });
}

ColorSystemProc::ColorSystemProc(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kColorSystemProc), context.width, context.height, 4, 1),
      kernels_(context.kernels),
      settings_(context.settings),
      tables_(context.tables),
      tuning_(context.tuning) {}

Result ColorSystemProc::BuildTables() {
  auto tone = BlockOf<std::int16_t>::Zeroed(kRgbToneTableSize);
  if (!tone) return DEIMG_OUT_OF_MEMORY;
  const auto toneIndex = settings_.toneIndex();
  if (!toneIndex) return DEIMG_UNSUPPORTED;
  auto gain = BlockOf<Sample>::Zeroed(kChromaGainTableSize);
  if (!gain) return DEIMG_OUT_OF_MEMORY;
  BuildRgbToneTable(tuning_.rgbToneRecord(*toneIndex, settings_.isoClass), tone.get());
  BuildChromaGainTable(tables_.colourGains, gain.get());
  rgbToneTable_ = std::move(tone);
  chromaGainTable_ = std::move(gain);
  return DEIMG_OK;
}

Result ColorSystemProc::Run(int first, int last) {
  ComponentX* const chroma = LastInput(TypeId::kChromaSuppress);
  ComponentX* const matrix = LastInput(TypeId::kMatrix4x3);
  if (chroma == nullptr || matrix == nullptr) return DEIMG_UNSUPPORTED;
  const bool full = settings_.full();
  if (full && !rgbToneTable_) DEIMG_RETURN_IF_FAILED(BuildTables());
  const auto toRgbLine = tuning_.smoothSelect() == 0 ? kernels_.toRgbLine9 : kernels_.toRgbLine7;
  const std::array<Sample, 3> black = {tuning_.blackR(), tuning_.blackG(), tuning_.blackB()};
  for (int o = first; o <= last; ++o) {
    Sample* const p0 = OwnLine(o, 0);
    Sample* const p1 = OwnLine(o, 1);
    Sample* const p2 = OwnLine(o, 2);
    toRgbLine(matrix->GetLine(o, 0), chroma->GetLine(o, 0), chroma->GetLine(o, 1), black.data(),
              width(), p0, p1, p2);
    if (full) {
      for (Sample* const line : {p0, p1, p2}) {
        LookUpLine(rgbToneTable_.get() - kLowestLinear, width(), line);
      }
    }
    kernels_.toColourDifferencesLine(p0, width(), p1, p2);
    if (full) {
      Sample* const gain = Scratch(0);
      kernels_.chromaLevelLine(p1, p2, width(), gain);
      LookUpLine(chromaGainTable_.get(), width(), gain);
      kernels_.adjustColourDifferencesLine(gain, tables_.colourOffsets.data(), width(), p1, p2);
    }
  }
  return DEIMG_OK;
}

}  // namespace deimg

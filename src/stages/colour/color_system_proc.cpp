#include "stages/colour/color_system_proc.h"

#include <algorithm>
#include <cstdlib>

#include "graph/rounding.h"
#include "stages/colour/rgb_tone_curve.h"

namespace deimg {
namespace {

constexpr Sample kLowestChroma = -4096;
constexpr Sample kHighestChroma = 4095;
constexpr int kUnsmoothed = 4;  // columns on each side

void CopyEnds(Line in, int width, MutableLine out) {
  for (int x = 0; x < std::min(kUnsmoothed, width); ++x) {
    out[x] = in[x];
    out[width - 1 - x] = in[width - 1 - x];
  }
}

void ToneLine(const Sample* table, int width, MutableLine line) {
  for (int x = 0; x < width; ++x) line[x] = table[line[x] - kLowestLinear];
}

}  // namespace

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

void SmoothLine9(Line in, int width, MutableLine out) {
  CopyEnds(in, width, out);
  for (int x = kUnsmoothed; x < width - kUnsmoothed; ++x) {
    out[x] = (28 * in[x] + 21 * (in[x - 1] + in[x + 1]) + 18 * (in[x - 2] + in[x + 2]) +
              7 * (in[x - 3] + in[x + 3]) + 4 * (in[x - 4] + in[x + 4])) /
             128;
  }
}

void SmoothLine7(Line in, int width, MutableLine out) {
  CopyEnds(in, width, out);
  for (int x = kUnsmoothed; x < width - kUnsmoothed; ++x) {
    out[x] = (16 * in[x] + 13 * (in[x - 1] + in[x + 1]) + 8 * (in[x - 2] + in[x + 2]) +
              3 * (in[x - 3] + in[x + 3])) /
             64;
  }
}

void ToRgbLine(const std::array<Sample, 3>& black, int width, MutableLine yToR, MutableLine c1ToG,
               MutableLine c2ToB) {
  const Sample blackR = 4 * black[0], blackG = 4 * black[1], blackB = 4 * black[2];
  for (int x = 0; x < width; ++x) {
    const Sample y = yToR[x];
    const Sample r = y + c1ToG[x];
    const Sample b = y + c2ToB[x];
    const Sample g = (1024 * y - 307 * r - 113 * b) / 604;
    yToR[x] = std::clamp(r - blackR, kLowestLinear, kHighestLinear);
    c1ToG[x] = std::clamp(g - blackG, kLowestLinear, kHighestLinear);
    c2ToB[x] = std::clamp(b - blackB, kLowestLinear, kHighestLinear);
  }
}

void ToColourDifferencesLine(Line r, int width, MutableLine gToCr, MutableLine bToCb) {
  for (int x = 0; x < width; ++x) {
    const Sample g = gToCr[x];
    const Sample b = bToCb[x];
    const Sample cr = (512 * r[x] - 429 * g - 83 * b) / 1024;
    const Sample cb = 8 * (-172 * r[x] - 340 * g + 512 * b) / 8192;
    gToCr[x] = std::clamp(cr, kLowestChroma, kHighestChroma);
    bToCb[x] = std::clamp(cb, kLowestChroma, kHighestChroma);
  }
}

void ChromaGainLine(const Sample* table, int width, MutableLine cr, MutableLine cb) {
  for (int x = 0; x < width; ++x) {
    const Sample gain = table[std::max(std::abs(cr[x]), std::abs(cb[x])) / 32];
    cr[x] = cr[x] * gain / 128;
    cb[x] = cb[x] * gain / 128;
  }
}

void HueMixLine(const std::array<std::int16_t, 4>& mix, int width, MutableLine cr, MutableLine cb) {
  const Sample h0 = 8 * mix[0], h1 = 8 * mix[1], h2 = 8 * mix[2], h3 = 8 * mix[3];
  for (int x = 0; x < width; ++x) {
    const Sample red = cr[x];
    const Sample blue = cb[x];
    cr[x] = red + ((blue < 0 ? h1 : 0) + h3) * blue / 1024;
    cb[x] = blue + ((red < 0 ? h0 : 0) + h2) * red / 1024;
  }
}

ColorSystemProc::ColorSystemProc(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kColorSystemProc), context.width, context.height, 4),
      settings_(context.settings),
      tables_(context.tables),
      tuning_(context.tuning) {}

Result ColorSystemProc::BuildTables() {
  auto tone = BlockOf<Sample>::Zeroed(kRgbToneTableSize);
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
  const auto smoothLine = tuning_.smoothSelect() == 0 ? SmoothLine9 : SmoothLine7;
  const std::array<Sample, 3> black = {tuning_.blackR(), tuning_.blackG(), tuning_.blackB()};
  for (int o = first; o <= last; ++o) {
    Sample* const p0 = OwnLine(o, 0);
    Sample* const p1 = OwnLine(o, 1);
    Sample* const p2 = OwnLine(o, 2);
    smoothLine(matrix->GetLine(o, 0), width(), p0);
    smoothLine(chroma->GetLine(o, 0), width(), p1);
    smoothLine(chroma->GetLine(o, 1), width(), p2);
    ToRgbLine(black, width(), p0, p1, p2);
    if (full) {
      for (Sample* line : {p0, p1, p2}) ToneLine(rgbToneTable_.get(), width(), line);
    }
    ToColourDifferencesLine(p0, width(), p1, p2);
    if (full) {
      ChromaGainLine(chromaGainTable_.get(), width(), p1, p2);
      HueMixLine(tables_.colourOffsets, width(), p1, p2);
    }
  }
  return DEIMG_OK;
}

}  // namespace deimg

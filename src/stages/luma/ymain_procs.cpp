#include "stages/luma/ymain_procs.h"

#include <algorithm>

#include "graph/rounding.h"

namespace deimg {
namespace {

constexpr Sample kHighest = 8191;
constexpr Sample kHighestLevel = YMainProcs::kGainTableSize - 1;

Sample Clipped(Sample y) { return std::clamp(y, 0, kHighest); }

void ToneLine(const std::uint16_t* table, int width, MutableLine y) {
  for (int x = 0; x < width; ++x) y[x] = table[y[x]];
}

/// One quadratic segment: its start in units of 4, and its five controls.
struct Segment {
  Sample start;
  const std::int16_t* controls;
};

Segment ChooseSegment(Sample i, const TuningBlock::Words<32>& c) {
  if (i < 4 * c[0]) return {0, &c[1]};
  if (i < 1008) return {c[0], &c[6]};
  if (i < 1920) return {252, &c[11]};
  if (i < 3312) return {480, &c[16]};
  if (i < 4 * c[26]) return {828, &c[21]};
  return {c[26], &c[27]};
}

/// Shifts right by a count taken modulo 32.
Sample ShiftedRight(Sample value, int count) { return value >> (count & 31); }

Sample CorrectionGain(int factor, int shift) {
  return factor == 0 && shift == 0 ? 0 : ShiftedRight(8 * factor + 32, 3 - shift);
}

}  // namespace

Result BuildDetailGainTable(const DetailGainParams& params, std::uint16_t* table) {
  constexpr double kRise[] = {0.0, 4.0, 2.0, 1.0};
  constexpr double kFall[] = {0.0, -1.0, -0.5, -0.25};
  constexpr int kEnd[] = {1024, 800, 832, 864, 896, 928, 960, 992};
  if (params.riseCode > 3 || params.fallCode > 3 || params.endCode > 7) return DEIMG_UNSUPPORTED;
  const double peak = params.peak;
  const double rise = kRise[params.riseCode];
  const double fall = kFall[params.fallCode];
  const int end = kEnd[params.endCode];
  const int x1 = rise != 0 ? Truncated(peak / rise) : 0;
  const double intercept = -(end * fall);
  const int x2 = fall != 0 ? Truncated((peak - intercept) / fall) : 1023;
  for (int i = 0; i < YMainProcs::kGainTableSize; ++i) {
    double gain = 0;
    if (i < x1) {
      gain = i * rise;
    } else if (i < x2) {
      gain = peak;
    } else if (i < end) {
      gain = i * fall + intercept;
    }
    table[i] = Low16(Truncated(gain * 16));
  }
  return DEIMG_OK;
}

Result NegativeScale(std::int16_t modeA, std::int16_t modeB, Sample& scale) {
  constexpr Sample kScales[3][4] = {{0, 128, 256, -1}, {64, 192, 320, 576}, {512, 640, 768, -1}};
  if (modeB < 0 || modeB > 3) return DEIMG_UNSUPPORTED;
  const int row = modeA == 0 || modeA == 1 ? modeA : 2;
  if (kScales[row][modeB] < 0) return DEIMG_UNSUPPORTED;
  scale = kScales[row][modeB];
  return DEIMG_OK;
}

Sample LuminanceToneCurve(Sample i, const TuningBlock::Words<32>& controls) {
  const Segment segment = ChooseSegment(i, controls);
  const Sample base = segment.controls[0];
  const Sample linear = segment.controls[1];
  const Sample quadratic = segment.controls[2];
  const Sample shift = segment.controls[3];
  const Sample quarter = segment.controls[4];
  const Sample d = i - 4 * segment.start;
  Sample v = (quadratic * d * d / 512 + linear * d) >> 6;
  if (quarter == 1) v >>= 2;
  if (shift >= 1 && shift <= 3) v >>= shift;
  return Clipped(v + 32 * base);
}

ChromaCorrection ChromaCorrectionOf(const std::array<std::uint16_t, 7>& p) {
  ChromaCorrection correction{};
  correction.threshold = static_cast<Sample>(32u << ((p[5] - 1) & 31));
  correction.gainCb = CorrectionGain(p[0], p[1]);
  correction.gainCr = CorrectionGain(p[2], p[3]);
  if (p[4] == 1) correction.gainCr = -correction.gainCr;
  return correction;
}

void ScaleLuminanceLine(Line y, int width, MutableLine out) {
  for (int x = 0; x < width; ++x) out[x] = Clipped(y[x] / 8);
}

void AddDetailsLine(Line y, const DetailLines& details, const std::uint16_t* gainTable,
                    Sample negativeScale, int width, MutableLine scratch, MutableLine out) {
  const Line hNarrow = details.hNarrow, hWide = details.hWide, r = details.r, v = details.v,
             a = details.a;
  for (int x = 0; x < width; ++x) scratch[x] = hNarrow[x] + hWide[x] + r[x] + v[x] + a[x];
  const auto enhanced = [&](int x, Sample level) {
    const Sample detail = gainTable[std::clamp(level, 0, kHighestLevel)] * scratch[x] / 128;
    return Clipped((y[x] + (detail < 0 ? detail * negativeScale / 1024 : detail)) / 8);
  };
  for (const int x : {0, 1, width - 3, width - 2, width - 1}) out[x] = enhanced(x, y[x] / 64);
  for (int x = 2; x < width - 3; ++x) {
    out[x] = enhanced(x, (y[x - 2] + y[x + 2] + 2 * (y[x - 1] + y[x] + y[x + 1])) / 512);
  }
}

void CorrectByChromaLine(Line cr, Line cb, const ChromaCorrection& correction, int width,
                         MutableLine y) {
  const auto [threshold, gainCr, gainCb] = correction;
  for (int x = 0; x < width; ++x) {
    const Sample excessCr = std::max(0, cr[x] - threshold);
    const Sample excessCb = std::max(0, cb[x] - threshold);
    y[x] = Clipped((2 * y[x] - (excessCr * gainCr + excessCb * gainCb) / 16 + 1) / 2);
  }
}

YMainProcs::YMainProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kYMainProcs), context.width, context.height, 4, 1),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result YMainProcs::PrepareDetail() {
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const int set = *setIndex;
  auto table = BlockOf<std::uint16_t>::Zeroed(kGainTableSize);
  if (!table) return DEIMG_OUT_OF_MEMORY;
  DEIMG_RETURN_IF_FAILED(BuildDetailGainTable(
      {tuning_.detailRiseCode(set), tuning_.detailFallCode(set), tuning_.detailEndCode(set),
       tuning_.detailGainPeak(set, settings_.isoClass)},
      table.get()));
  DEIMG_RETURN_IF_FAILED(
      NegativeScale(tuning_.negativeModeA(set), tuning_.negativeModeB(set), negativeScale_));
  detailGainTable_ = std::move(table);
  return DEIMG_OK;
}

Result YMainProcs::PrepareTone() {
  const auto toneIndex = settings_.toneIndex();
  if (!toneIndex) return DEIMG_UNSUPPORTED;
  auto table = BlockOf<std::uint16_t>::Zeroed(kToneTableSize);
  if (!table) return DEIMG_OUT_OF_MEMORY;
  const auto controls = tuning_.toneControls(*toneIndex, settings_.isoClass);
  for (int i = 0; i < kToneTableSize; ++i) {
    table[static_cast<std::size_t>(i)] = Low16(LuminanceToneCurve(i, controls));
  }
  toneTable_ = std::move(table);
  return DEIMG_OK;
}

Result YMainProcs::Run(int first, int last) {
  if (!detailGainTable_) DEIMG_RETURN_IF_FAILED(PrepareDetail());
  ComponentX* const mix = LastInput(TypeId::kRamenToYmix);
  ComponentX* const hApc = LastInput(TypeId::kHApcProcs);
  ComponentX* const rApc = LastInput(TypeId::kRApcProcs);
  ComponentX* const vApc = LastInput(TypeId::kVApcProcs);
  ComponentX* const aApc = LastInput(TypeId::kAApcProcs);
  if (mix == nullptr || hApc == nullptr || rApc == nullptr || vApc == nullptr || aApc == nullptr) {
    return DEIMG_UNSUPPORTED;
  }
  const bool full = settings_.full();
  if (full && !toneTable_) DEIMG_RETURN_IF_FAILED(PrepareTone());
  ComponentX* const chroma = LastInput(TypeId::kColorSystemProc);
  if (full && chroma == nullptr) return DEIMG_UNSUPPORTED;
  const ChromaCorrection correction =
      full ? ChromaCorrectionOf(tuning_.chromaCorrection(*settings_.toneIndex()))
           : ChromaCorrection{};

  for (int o = first; o <= last; ++o) {
    Sample* const out = OwnLine(o, 0);
    if (!full || settings_.quick()) {
      ScaleLuminanceLine(mix->GetLine(o, 0), width(), out);
    } else {
      const DetailLines details{hApc->GetLine(o, 0), hApc->GetLine(o, 1), rApc->GetLine(o, 0),
                                vApc->GetLine(o, 0), aApc->GetLine(o, 0)};
      AddDetailsLine(mix->GetLine(o, 0), details, detailGainTable_.get(), negativeScale_, width(),
                     Scratch(0), out);
    }
    if (!full) continue;
    ToneLine(toneTable_.get(), width(), out);
    CorrectByChromaLine(chroma->GetLine(o, 1), chroma->GetLine(o, 2), correction, width(), out);
  }
  return DEIMG_OK;
}

}  // namespace deimg

#include "stages/luma/ymain_procs.h"

#include <algorithm>

#include "graph/look_up.h"
#include "graph/rounding.h"

namespace deimg {
namespace {

constexpr Sample kHighest = 8191;

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

Result MakeDetailGain(const DetailGainParams& params, DetailGain& gain) {
  constexpr Sample kRise[] = {0, 64, 32, 16};
  constexpr Sample kFall[] = {0, 16, 8, 4};
  constexpr Sample kEnd[] = {1024, 800, 832, 864, 896, 928, 960, 992};
  if (params.riseCode > 3 || params.fallCode > 3 || params.endCode > 7) return DEIMG_UNSUPPORTED;
  const Sample peak = 16 * params.peak;
  gain.rise = kRise[params.riseCode];
  gain.riseEnd = gain.rise != 0 ? peak / gain.rise : 0;
  gain.hold = Low16(peak);
  gain.fall = kFall[params.fallCode];
  gain.end = kEnd[params.endCode];
  // Where the fall starts is rounded toward zero: up, where a high peak puts it below zero.
  gain.holdEnd =
      gain.fall != 0 ? (gain.end * gain.fall - peak) / gain.fall : DetailGain::kHighestLevel;
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
  return std::clamp(v + 32 * base, 0, kHighest);
}

ChromaCorrection ChromaCorrectionOf(const std::array<std::uint16_t, 7>& p) {
  ChromaCorrection correction{};
  correction.threshold = static_cast<Sample>(32u << ((p[5] - 1) & 31));
  correction.gainCb = CorrectionGain(p[0], p[1]);
  correction.gainCr = CorrectionGain(p[2], p[3]);
  if (p[4] == 1) correction.gainCr = -correction.gainCr;
  return correction;
}

YMainProcs::YMainProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kYMainProcs), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result YMainProcs::PrepareDetail() {
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const int set = *setIndex;
  DetailGain gain{};
  DEIMG_RETURN_IF_FAILED(
      MakeDetailGain({tuning_.detailRiseCode(set), tuning_.detailFallCode(set),
                      tuning_.detailEndCode(set), tuning_.detailGainPeak(set, settings_.isoClass)},
                     gain));
  DEIMG_RETURN_IF_FAILED(
      NegativeScale(tuning_.negativeModeA(set), tuning_.negativeModeB(set), gain.negativeScale));
  detailGain_ = gain;
  return DEIMG_OK;
}

Result YMainProcs::PrepareTone() {
  const auto toneIndex = settings_.toneIndex();
  if (!toneIndex) return DEIMG_UNSUPPORTED;
  auto table = BlockOf<std::int16_t>::Zeroed(kToneTableSize);
  if (!table) return DEIMG_OUT_OF_MEMORY;
  const auto controls = tuning_.toneControls(*toneIndex, settings_.isoClass);
  for (int i = 0; i < kToneTableSize; ++i) {
    table[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(LuminanceToneCurve(i, controls));
  }
  toneTable_ = std::move(table);
  return DEIMG_OK;
}

Result YMainProcs::Run(int first, int last) {
  if (!detailGain_) DEIMG_RETURN_IF_FAILED(PrepareDetail());
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
      kernels_.scaleLuminanceLine(mix->GetLine(o, 0), width(), out);
    } else {
      const DetailLines details{hApc->GetLine(o, 0), hApc->GetLine(o, 1), rApc->GetLine(o, 0),
                                vApc->GetLine(o, 0), aApc->GetLine(o, 0)};
      kernels_.addDetailsLine(mix->GetLine(o, 0), details, *detailGain_, width(), out);
    }
    if (!full) continue;
    LookUpLine(toneTable_.get(), width(), out);
    kernels_.correctByChromaLine(chroma->GetLine(o, 1), chroma->GetLine(o, 2), correction, width(),
                                 out);
  }
  return DEIMG_OK;
}

}  // namespace deimg

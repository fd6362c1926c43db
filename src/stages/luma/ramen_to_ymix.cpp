#include "stages/luma/ramen_to_ymix.h"

namespace deimg {

void AddDetailLine(Line luminance, Line detail, Sample gain, Sample mixGain, int width,
                   MutableLine mixed, MutableLine enhanced) {
  for (int x = 0; x < width; ++x) {
    const Sample sum = luminance[x] + detail[x] * gain / 8;
    enhanced[x] = sum;
    mixed[x] = sum - detail[x] * mixGain / 8;
  }
}

void MixLine(Line r, Line b, const std::array<std::int16_t, 3>& weights, Sample pedestal, int width,
             MutableLine y) {
  const Sample wR = weights[0], wY = weights[1], wB = weights[2];
  const auto mix = [&](Sample own, Sample red, Sample blue) {
    return (own * wY + red * wR + blue * wB) / 256 - pedestal;
  };
  const int last = width - 1;
  y[0] = mix(y[0], 4 * r[0], 4 * b[0]);
  for (int x = 1; x < last; ++x) {
    y[x] = mix(y[x], r[x - 1] + 2 * r[x] + r[x + 1], b[x - 1] + 2 * b[x] + b[x + 1]);
  }
  y[last] = mix(y[last], 4 * r[last], 4 * b[last]);
}

RamenToYmix::RamenToYmix(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kRamenToYmix), context.width, context.height, 4),
      settings_(context.settings),
      tuning_(context.tuning),
      weights_(context.tables.luminanceWeights) {}

Result RamenToYmix::Run(int first, int last) {
  ComponentX* const luminance = LastInput(TypeId::kHorLpfForAFilter);
  ComponentX* const detail = LastInput(TypeId::kAFilterMain);
  if (luminance == nullptr || detail == nullptr) return DEIMG_UNSUPPORTED;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  ComponentX* const planes = FirstInput(TypeId::kHokanVH);
  if (planes == nullptr) return DEIMG_UNSUPPORTED;
  const Sample gain = tuning_.detailGainLow(*setIndex);
  const Sample mixGain = tuning_.detailGainMix(*setIndex);
  const Sample pedestal = 8 * (tuning_.luminancePedestal() / 2);
  for (int o = first; o <= last; ++o) {
    AddDetailLine(luminance->GetLine(o, 0), detail->GetLine(o, 0), gain, mixGain, width(),
                  OwnLine(o, 0), OwnLine(o, 1));
    MixLine(planes->GetLine(o, 0), planes->GetLine(o, 3), weights_, pedestal, width(),
            OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

/// The luminance signal of the picture.
///
/// Adds detail to the low-passed luminance, mixes it with smoothed red and blue, and removes a
/// pedestal.
///
/// Inputs: detail and the low-passed luminance (both 16 x the mosaic's scale); red and blue of the
/// planes (4 x). Output: kMixed, the luminance mix; kEnhanced, the luminance with its detail.
#ifndef DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_INL_H
#define DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_INL_H

#include "stages/colour/hokan_vh-inl.h"
#include "stages/luma/a_filter_main-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class RamenToYmix final : public Stage {
 public:
  enum Port { kMixed, kEnhanced };

  RamenToYmix(const StageContext& context, AFilterMain<T>& detail, HorLpfForAFilter& luminance,
              HokanVH<T>& planes)
      : Stage(InfoOf(TypeId::kRamenToYmix), context.size(), {&detail, &luminance, &planes}),
        context_(context),
        detail_(*this, detail, AFilterMain<T>::kDetail),
        luminance_(*this, luminance, HorLpfForAFilter::kLowPassed),
        red_(*this, planes, HokanVH<T>::kRed),
        blue_(*this, planes, HokanVH<T>::kBlue) {}

 private:
  void ComputeLine(int o) override {
    const FilterTuning& tuning = context_.filters();
    const Sample pedestal = 8 * (context_.tuning.luminancePedestal / 2);
    AddDetailLine(luminance_[o], detail_[o], tuning.detailGainLow, tuning.detailGainMix, width(),
                  mixed_[o], enhanced_[o]);
    MixLine(red_[o], blue_[o], context_.tables.luminanceWeights.data(), pedestal, width(),
            mixed_[o]);
  }

  /// enhanced = luminance + detail x gain / 8; mixed takes detail x mixGain / 8 back.
  static void AddDetailLine(Line luminance, Line detail, Sample gain, Sample mixGain, int width,
                            MutableLine mixed, MutableLine enhanced) {
    for (Index x = 0; x < width; ++x) {
      const Sample sum = luminance[x] + detail[x] * gain / 8;
      enhanced[x] = sum;
      mixed[x] = sum - detail[x] * mixGain / 8;
    }
  }

  /// In place: weights the line with red and blue, each smoothed by 1, 2, 1, and subtracts the
  /// pedestal.
  static void MixLine(LineOf<T> r, LineOf<T> b, const std::int16_t* weights, Sample pedestal,
                      int width, MutableLine y) {
    const Sample wR = weights[0], wY = weights[1], wB = weights[2];
    const auto mix = [&](Sample own, Sample red, Sample blue) {
      return (own * wY + red * wR + blue * wB) / kWeightOne - pedestal;
    };
    const int last = width - 1;
    y[0] = mix(y[0], 4 * r[0], 4 * b[0]);
    for (Index x = 1; x < last; ++x) {
      y[x] = mix(y[x], r[x - 1] + 2 * r[x] + r[x + 1], b[x - 1] + 2 * b[x] + b[x + 1]);
    }
    y[last] = mix(y[last], 4 * r[last], 4 * b[last]);
  }

  const StageContext& context_;
  const Input<Sample> detail_;
  const Input<Sample> luminance_;
  const Input<T> red_;
  const Input<T> blue_;
  const Output<Sample> mixed_{*this, kMixed};
  const Output<Sample> enhanced_{*this, kEnhanced};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_INL_H

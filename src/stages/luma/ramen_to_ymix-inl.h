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
#include "stages/colour/smoothing-inl.h"
#include "stages/luma/a_filter_main-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class RamenToYmix final : public Stage {
 public:
  enum Port { kMixed, kEnhanced };

  RamenToYmix(const StageContext& context, AFilterMain<T>& detail, HorLpfForAFilter<T>& luminance,
              HokanVH<T>& planes)
      : Stage(InfoOf(TypeId::kRamenToYmix), context.size(), {&detail, &luminance, &planes}),
        context_(context),
        detail_(*this, detail, AFilterMain<T>::kDetail),
        luminance_(*this, luminance, HorLpfForAFilter<T>::kLowPassed),
        red_(*this, planes, HokanVH<T>::kRed),
        blue_(*this, planes, HokanVH<T>::kBlue),
        mixed_(*this, kMixed, MixedRange()),
        enhanced_(*this, kEnhanced, EnhancedRange()) {
    this->template Needs<T>(red_.range() + red_.range());
    this->template Needs<T>(blue_.range() + blue_.range());
    for (const std::int16_t weight : context.tables.luminanceWeights) {
      this->template Needs<T>(Exactly(4 * weight));
    }
  }

 private:
  Sample pedestal() const { return 8 * (context_.tuning.luminancePedestal / 2); }

  Range EnhancedRange() const {
    return luminance_.range() + context_.filters().detailGainLow * detail_.range() / 8;
  }
  Range MixedRange() const {
    const auto& weights = context_.tables.luminanceWeights;
    const Range own = EnhancedRange() - context_.filters().detailGainMix * detail_.range() / 8;
    const Range sum =
        weights[1] * own + weights[0] * (4 * red_.range()) + weights[2] * (4 * blue_.range());
    return sum / kWeightOne - Exactly(pedestal());
  }

  void ComputeLine(int o) override {
    const FilterTuning& tuning = context_.filters();
    const auto& weights = context_.tables.luminanceWeights;
    const Mix mix = {tuning.detailGainLow, tuning.detailGainMix, weights[0],
                     weights[1],           weights[2],           pedestal()};
    MixLine(luminance_[o], detail_[o], red_[o], blue_[o], mix, width(), enhanced_[o], mixed_[o]);
  }

  struct Mix {
    Sample gain, mixGain;   // of detail, in eighths
    Sample red, own, blue;  // weights
    Sample pedestal;
  };

  /// enhanced = luminance + detail x gain / 8. Then detail x mixGain / 8 is taken back, the line
  /// weighted with red and blue, each smoothed by 1, 2, 1, and the pedestal subtracted.
  static void MixLine(Line luminance, Line detail, LineOf<T> r, LineOf<T> b, Mix mix, int width,
                      MutableLine enhanced, MutableLine mixed) {
    const auto mixAt = [=]<int n>(Index x, Sums<T, n> colours) {
      const auto details = LoadSums<n, T>(detail + x);
      const auto sum = LoadSums<n, T>(luminance + x) + Quotient<3>(details * mix.gain);
      const auto own = sum - Quotient<3>(details * mix.mixGain);
      StoreSums(enhanced + x, sum);
      StoreSums(mixed + x, Quotient<8>(own * mix.own + colours) - own.All(mix.pedestal));
    };
    for (const Index x : {0, width - 1}) {
      mixAt(x, DotPairs(Load<1>(r + x), 4 * mix.red, Load<1>(b + x), 4 * mix.blue));
    }
    ForColumns<T>(1, width - 1, [=]<int n>(LaneCount<n>, Index x) {
      const auto smoothed = [=](LineOf<T> in, Sample weight) {
        return DotPairs(PairAt<n>(in + x, 1), weight, Load<n>(in + x), 2 * weight);
      };
      mixAt(x, smoothed(r, mix.red) + smoothed(b, mix.blue));
    });
  }

  const StageContext& context_;
  const Input<Sample> detail_;
  const Input<Sample> luminance_;
  const Input<T> red_;
  const Input<T> blue_;
  const Output<Sample> mixed_;
  const Output<Sample> enhanced_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_RAMEN_TO_YMIX_INL_H

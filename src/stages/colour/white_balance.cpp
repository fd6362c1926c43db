#include "stages/colour/white_balance.h"

#include <algorithm>

#include "graph/rounding.h"

namespace deimg {
namespace {

constexpr Sample kHighest = kExposureTableSize - 1;
constexpr int kLargestAdjustment = 20;  // tenths of a stop

bool IsSupported(int adjust) {
  return adjust >= -kLargestAdjustment && adjust <= kLargestAdjustment;
}

/// 2 to the power of adjust / 10, rounded to single precision: whole stops times tenths. No
/// mathematics library and no precision that a host leaves the processor in has a say in it.
double ExposureFactor(int adjust) {
  constexpr float kStops[] = {0.25F, 0.5F, 1.0F, 2.0F, 4.0F};
  constexpr float kTenths[] = {1.0F,        1.07177341F, 1.14869833F, 1.23114443F, 1.31950796F,
                               1.41421354F, 1.51571655F, 1.62450480F, 1.74110115F, 1.86606598F};
  const int fromLowest = adjust + kLargestAdjustment;
  return kStops[fromLowest / 10] * kTenths[fromLowest % 10];
}

}  // namespace

template <typename T>
WhiteBalance<T>::WhiteBalance(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kWhiteBalance), context.width, context.height, 4, 1),
      kernels_(context.kernels),
      settings_(context.settings) {
  const int adjust = settings_.exposureAdjust;
  if (adjust == 0 || !IsSupported(adjust)) return;
  const double factor = ExposureFactor(adjust);
  if (adjust < 0) {
    const Sample greenGain = (settings_.wbGains[1] + settings_.wbGains[2]) / 2;
    clipLevel_ = std::min(Truncated(4096.0 * factor * greenGain / 1024.0), kHighest);
  }
  exposureTable_ = BlockOf<std::uint16_t>::Zeroed(kExposureTableSize);
  if (!exposureTable_) return;
  for (int i = 0; i < kExposureTableSize; ++i) {
    exposureTable_[static_cast<std::size_t>(i)] = Low16(std::min(Truncated(i * factor), kHighest));
  }
}

template <typename T>
Result WhiteBalance<T>::Run(int first, int last) {
  if (!settings_.wbGainsSet) return DEIMG_UNSUPPORTED;
  ComponentX* const source = input(0);
  if (source == nullptr || source->typeId() != TypeId::kSourceStreamReader) return DEIMG_MISSING;
  const int adjust = settings_.exposureAdjust;
  if (!IsSupported(adjust)) return DEIMG_MISSING;
  if (adjust != 0 && !exposureTable_) return DEIMG_OUT_OF_MEMORY;
  for (int o = first; o <= last; ++o) {
    const auto* in = source->GetLine<std::uint16_t>(o, 0);
    if (adjust != 0) {
      auto* const exposed = Scratch<std::uint16_t>(0);
      kernels_.exposureLine(in, width(), exposureTable_.get(), exposed);
      in = exposed;
    }
    const std::size_t site = IsOddAt(o) ? 2 : 0;
    kernels_.mosaic<T>().whiteBalanceLine(in, width(), settings_.wbGains[site],
                                          settings_.wbGains[site + 1], clipLevel_,
                                          OwnLine<T>(o, 0));
  }
  return DEIMG_OK;
}

template class WhiteBalance<NarrowSample>;
template class WhiteBalance<Sample>;

}  // namespace deimg

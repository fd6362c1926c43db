#include "stages/colour/white_balance.h"

#include <algorithm>
#include <cmath>

#include "graph/rounding.h"

namespace deimg {
namespace {

constexpr Sample kGainOne = DEIMG_WB_GAIN_ONE;
constexpr Sample kPedestal = 128;
constexpr Sample kHighest = WhiteBalance::kTableSize - 1;
constexpr int kLargestAdjustment = 20;  // tenths of a stop

}  // namespace

void WhiteBalanceLine(Line in, int width, Sample evenGain, Sample oddGain, Sample clipLevel,
                      MutableLine out) {
  for (int x = 0; x < width; x += 2) {
    out[x] = std::min(in[x] * evenGain / kGainOne + kPedestal, clipLevel);
    out[x + 1] = std::min(in[x + 1] * oddGain / kGainOne + kPedestal, clipLevel);
  }
}

void ExposureLine(Line in, int width, const std::uint16_t* table, MutableLine out) {
  for (int x = 0; x < width; ++x) out[x] = table[std::min(in[x], kHighest)];
}

WhiteBalance::WhiteBalance(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kWhiteBalance), context.width, context.height, 4, 1),
      settings_(context.settings) {
  const int adjust = settings_.exposureAdjust;
  if (adjust == 0) return;
  // Single precision from here on, so that every machine scales by the same factor.
  const double factor = static_cast<float>(std::pow(2.0, adjust / 10.0));
  if (adjust < 0) {
    const Sample greenGain = (settings_.wbGains[1] + settings_.wbGains[2]) / 2;
    clipLevel_ = std::min(Truncated(4096.0 * factor * greenGain / 1024.0), kHighest);
  }
  exposureTable_ = BlockOf<std::uint16_t>::Zeroed(kTableSize);
  if (!exposureTable_) return;
  for (int i = 0; i < kTableSize; ++i) {
    exposureTable_[static_cast<std::size_t>(i)] = Low16(std::min(Truncated(i * factor), kHighest));
  }
}

Result WhiteBalance::Run(int first, int last) {
  if (!settings_.wbGainsSet) return DEIMG_UNSUPPORTED;
  ComponentX* const source = input(0);
  if (source == nullptr || source->typeId() != TypeId::kSourceStreamReader) return DEIMG_MISSING;
  const int adjust = settings_.exposureAdjust;
  if (adjust < -kLargestAdjustment || adjust > kLargestAdjustment) return DEIMG_MISSING;
  if (adjust != 0 && !exposureTable_) return DEIMG_OUT_OF_MEMORY;
  for (int o = first; o <= last; ++o) {
    const Sample* in = source->GetLine(o, 0);
    if (adjust != 0) {
      ExposureLine(in, width(), exposureTable_.get(), Scratch(0));
      in = Scratch(0);
    }
    const std::size_t site = IsOddAt(o) ? 2 : 0;
    WhiteBalanceLine(in, width(), settings_.wbGains[site], settings_.wbGains[site + 1], clipLevel_,
                     OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

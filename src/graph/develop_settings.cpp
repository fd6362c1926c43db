#include "graph/develop_settings.h"

#include <algorithm>
#include <cstdint>

namespace deimg {
namespace {

constexpr std::int16_t AsRecorded(std::int16_t level, std::int16_t recorded) {
  return level == DEIMG_AS_RECORDED ? recorded : level;
}

}  // namespace

std::optional<int> DevelopSettings::setIndex() const {
  switch (processingSet) {
    case -1:
    case 0:
    case 1:
      return processingSet + 1;
    case 3:
      return 3;
    default:
      return std::nullopt;
  }
}

std::optional<int> DevelopSettings::toneIndex() const {
  if (toneLevel < -1 || toneLevel > 1) return std::nullopt;
  return toneLevel + 1;
}

std::optional<int> IsoClassOf(std::int16_t sensitivity) {
  constexpr std::int16_t kSensitivities[] = {160, 192, 224, 256, 268};
  for (int i = 0; i < 5; ++i) {
    if (sensitivity == kSensitivities[i]) return i;
  }
  return std::nullopt;
}

bool DevelopSettings::mosaicIsNarrow() const {
  return std::all_of(wbGains.begin(), wbGains.end(),
                     [](std::int32_t gain) { return gain >= 0 && gain <= INT16_MAX; });
}

Result SettleSettings(DevelopParams& params, const ImageProps& props, DevelopSettings& settings) {
  settings.matrixSelect = params.matrixSelect;
  settings.toneLevel = AsRecorded(params.toneLevel, props.recordedToneLevel());
  settings.matrixLevel = AsRecorded(params.matrixLevel, props.recordedMatrixLevel());
  settings.processingSet = AsRecorded(params.processingSet, props.recordedProcessingSet());
  settings.colourLevel = AsRecorded(params.colourLevel, props.recordedColourLevel());
  settings.chromaMedian = params.chromaMedian;
  settings.exposureAdjust = params.exposureAdjust;
  settings.wbPreset = AsRecorded(params.wbPreset, props.recordedPreset());

  WhiteBalanceBlock& block = params.whiteBalance;
  if (block.wbGainsSet == 0) {
    if (settings.wbPreset < 0 || settings.wbPreset >= ImageProps::kPresets) {
      return DEIMG_UNSUPPORTED;
    }
    for (std::size_t i = 0; i < 4; ++i) block.wbGains[i] = props.presetGains[settings.wbPreset][i];
    block.wbGainsSet = 1;
  }
  settings.wbGainsSet = true;
  for (std::size_t i = 0; i < 4; ++i) {
    settings.wbGains[i] = static_cast<std::int32_t>(block.wbGains[i]);
  }
  if (settings.wbPreset < -1 || settings.wbPreset >= ImageProps::kPresets) {
    return DEIMG_UNSUPPORTED;
  }
  settings.colourTemperature = props.colourTemperatures[settings.wbPreset + 1];
  return DEIMG_OK;
}

}  // namespace deimg

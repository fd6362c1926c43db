#include "pipeline/settings.h"

#include <cstddef>
#include <cstring>

namespace deimg {
namespace {

/// A setting that the file records too: where the host gives it, where it goes, and its record.
struct RecordedSetting {
  std::int16_t DevelopParams::*param;
  std::int16_t DevelopSettings::*setting;
  std::int16_t (ImageProps::*recorded)() const;
};
constexpr RecordedSetting kRecordedSettings[] = {
    {&DevelopParams::toneLevel, &DevelopSettings::toneLevel, &ImageProps::recordedToneLevel},
    {&DevelopParams::matrixLevel, &DevelopSettings::matrixLevel, &ImageProps::recordedMatrixLevel},
    {&DevelopParams::processingSet, &DevelopSettings::processingSet,
     &ImageProps::recordedProcessingSet},
    {&DevelopParams::colourLevel, &DevelopSettings::colourLevel, &ImageProps::recordedColourLevel},
    {&DevelopParams::wbPreset, &DevelopSettings::wbPreset, &ImageProps::recordedPreset},
};

/// The place of a value in a list; none when it is not there.
template <std::size_t n>
std::optional<std::size_t> PlaceIn(const std::int16_t (&list)[n], std::int16_t value) {
  for (std::size_t i = 0; i < n; ++i) {
    if (list[i] == value) return i;
  }
  return std::nullopt;
}

}  // namespace

void ApplyDefaults(DevelopParams& params) {
  if (params.filled != 1) {
    std::memset(&params, 0, offsetof(DevelopParams, matrixSelect));
    for (const RecordedSetting& row : kRecordedSettings) params.*row.param = DEIMG_AS_RECORDED;
    params.matrixSelect = 0;
    params.exposureAdjust = 0;
  }
  if (params.whiteBalance.wbGainsSet != 1) params.whiteBalance = {};
  if (params.wbPreset != DEIMG_WB_POINT && params.wbPreset != DEIMG_WB_GAINS) {
    params.whiteBalance.wbGainsSet = 0;
  }
}

void ForceQuickSettings(DevelopParams& params) {
  params.chromaMedian = -1;
  params.processingSet = 3;
  params.matrixSelect = 0;
}

Result ResolveSettings(DevelopParams& params, const ImageProps& props, DevelopSettings& settings) {
  for (const RecordedSetting& row : kRecordedSettings) {
    const std::int16_t given = params.*row.param;
    settings.*row.setting = given == DEIMG_AS_RECORDED ? (props.*row.recorded)() : given;
  }
  settings.matrixSelect = params.matrixSelect;
  settings.chromaMedian = params.chromaMedian;
  settings.exposureAdjust = params.exposureAdjust;
  settings.toneIndex = PlaceIn<kToneLevels>({-1, 0, 1}, settings.toneLevel);

  WhiteBalanceBlock& block = params.whiteBalance;
  const int preset = settings.wbPreset;
  if (block.wbGainsSet == 0) {
    if (preset < 0 || preset >= ImageProps::kPresets) return DEIMG_UNSUPPORTED;
    for (std::size_t i = 0; i < 4; ++i) block.wbGains[i] = props.presetGains[preset][i];
    block.wbGainsSet = 1;
  }
  for (std::size_t i = 0; i < 4; ++i) {
    settings.wbGains[i] = static_cast<std::int32_t>(block.wbGains[i]);
  }
  // Gains that are given come with the preset -1 or 6, see ApplyDefaults().
  settings.colourTemperature = props.colourTemperatures[preset + 1];
  return DEIMG_OK;
}

std::optional<std::size_t> IsoClassOf(std::int16_t sensitivity) {
  return PlaceIn<kIsoClasses>({160, 192, 224, 256, 268}, sensitivity);
}

Result ResolveIndices(const ImageProps& props, DevelopSettings& settings) {
  const auto isoClass = IsoClassOf(static_cast<std::int16_t>(props.sensitivity()));
  const auto setIndex = PlaceIn<kTuningSets>({-1, 0, 1, 3}, settings.processingSet);
  if (!isoClass || !setIndex) return DEIMG_UNSUPPORTED;
  settings.isoClass = *isoClass;
  settings.setIndex = *setIndex;
  return DEIMG_OK;
}

}  // namespace deimg

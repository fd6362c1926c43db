/// The settings of one development, settled against what the raw file records.
#ifndef DEIMG_GRAPH_DEVELOP_SETTINGS_H
#define DEIMG_GRAPH_DEVELOP_SETTINGS_H

#include <array>
#include <cstdint>
#include <optional>

#include "api/result.h"
#include "props/image_props.h"

namespace deimg {

/// The builder's copy of the host's DevelopParams, every field settled.
struct DevelopSettings {
  std::uint16_t matrixSelect = 0;
  std::int16_t toneLevel = 0;
  std::int16_t matrixLevel = 0;
  std::int16_t processingSet = 0;
  std::int16_t colourLevel = 0;
  std::int16_t chromaMedian = 0;
  std::int16_t exposureAdjust = 0;  // tenths of a stop
  std::int16_t wbPreset = 0;
  bool wbGainsSet = false;
  std::array<std::int32_t, 4> wbGains{};  // red, green, green, blue; 1024 = 1.0
  std::int32_t colourTemperature = 0;     // kelvin
  int isoClass = 0;                       // 0 to 4 from the recorded sensitivity

  /// 0 to 3 for processing set -1, 0, 1, 3; none for every other value.
  std::optional<int> setIndex() const;
  /// 0 to 2 for tone level -1, 0, 1; none for every other value.
  std::optional<int> toneIndex() const;

  bool plain() const { return matrixSelect == 1; }
  bool full() const { return matrixSelect == 0; }
  bool quick() const { return processingSet == 3; }
  bool medianOff() const { return chromaMedian == -1; }

  /// Whether the white balance leaves no sample outside 0 to 4095: no gain is negative, and none
  /// makes a product with a raw sample wrap.
  bool mosaicIsNarrow() const;
};

/// Fills the settings from the host's block, taking every field at "as recorded" from the file, and
/// gains that the host did not give from the file's white-balance table. The gains are written back
/// to the host's block.
///
/// @return DEIMG_UNSUPPORTED when a preset outside the file's tables would be needed.
[[nodiscard]] Result SettleSettings(DevelopParams& params, const ImageProps& props,
                                    DevelopSettings& settings);

/// The sensitivity class, 0 to 4; none for a sensitivity the camera does not have.
[[nodiscard]] std::optional<int> IsoClassOf(std::int16_t sensitivity);

}  // namespace deimg

#endif  // DEIMG_GRAPH_DEVELOP_SETTINGS_H

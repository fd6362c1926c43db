/// What every stage of a job is given: settings, derived tables, tuning and size.
#ifndef DEIMG_STAGES_STAGE_CONTEXT_H
#define DEIMG_STAGES_STAGE_CONTEXT_H

#include <array>
#include <cstdint>
#include <optional>

#include "base/result.h"
#include "graph/component.h"
#include "props/image_geometry.h"
#include "props/tuning_block.h"

namespace deimg {

/// The settings of one development, resolved against what the raw file records.
struct DevelopSettings {
  std::uint16_t matrixSelect = 0;
  std::int16_t toneLevel = 0;
  std::int16_t matrixLevel = 0;
  std::int16_t processingSet = 0;
  std::int16_t colourLevel = 0;
  std::int16_t chromaMedian = 0;
  std::int16_t exposureAdjust = 0;  // tenths of a stop
  std::int16_t wbPreset = 0;
  std::array<std::int32_t, 4> wbGains{};   // red, green, green, blue; kGainOne = 1.0
  std::int32_t colourTemperature = 0;      // kelvin
  std::size_t setIndex = 0;                // 0 to 3 for processing set -1, 0, 1, 3
  std::optional<std::size_t> toneIndex{};  // 0 to 2 for tone level -1, 0, 1; none for another one
  std::size_t isoClass = 0;                // 0 to 4 from the recorded sensitivity

  bool plainProcessing() const { return matrixSelect == 1; }
  bool fullProcessing() const { return matrixSelect == 0; }
  bool quick() const { return processingSet == 3; }
  /// Whether the stages of detail have nothing to do.
  bool withoutDetail() const { return plainProcessing() || quick(); }
  bool medianOff() const { return chromaMedian == -1; }
  bool operator==(const DevelopSettings&) const = default;
};

/// What the stages take from the tuning tables.
struct DevelopmentTables {
  std::array<std::int16_t, 12> colourMatrix{};     // kMatrixOne = 1.0
  std::array<std::int16_t, 4> colourOffsets{};     // hue mix, 128 = 1.0
  std::array<std::int16_t, 7> colourGains{};       // of the chroma gain curve
  std::array<std::int16_t, 3> luminanceWeights{};  // kWeightOne = 1.0; red, own, blue
  std::int16_t chromaGainCb = 0;                   // kChromaGainOne = 1.0
  std::int16_t chromaGainCr = 0;
  /// Result of deriving the luminance weights, which the job looks at later than the rest.
  Result luminanceStatus = DEIMG_OK;
};

/// Outlives the stages of the job.
struct StageContext {
  const DevelopSettings& settings;
  const DevelopmentTables& tables;
  const TuningBlock& tuning;
  const ImageGeometry& geometry;

  PlaneSize size() const { return {geometry.sensorWidth, geometry.sensorHeight}; }
  const FilterTuning& filters() const { return tuning.filters[settings.setIndex]; }
  const DetailTuning& details() const { return tuning.details[settings.setIndex]; }
};

}  // namespace deimg

#endif  // DEIMG_STAGES_STAGE_CONTEXT_H

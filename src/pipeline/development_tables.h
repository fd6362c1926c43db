/// The values derived from the raw file's tuning tables at the white balance's colour temperature.
#ifndef DEIMG_PIPELINE_DEVELOPMENT_TABLES_H
#define DEIMG_PIPELINE_DEVELOPMENT_TABLES_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/result.h"
#include "props/image_props.h"
#include "stages/stage_context.h"

namespace deimg {

/// `n` values at a colour temperature.
template <std::size_t n>
struct TuningRecord {
  std::int32_t key;  // kelvin; -1 ends a group's valid records
  std::array<std::int16_t, n> values;
};

/// The tuning tables of a raw file: colour matrices, colour offsets and colour gains in three
/// groups each, and luminance weights. Keys ascend inside a group.
struct TuningTables {
  static constexpr std::size_t kGroups = 3;
  static constexpr std::size_t kRecords = 7;
  template <std::size_t n>
  using Group = std::array<TuningRecord<n>, kRecords>;

  std::array<std::int16_t, 9> scalars;
  std::array<Group<12>, kGroups> matrices;
  std::array<Group<4>, kGroups> colourOffsets;
  std::array<Group<7>, kGroups> colourGains;
  Group<3> luminanceWeights;

  // The scalars that the development uses.
  std::int16_t layoutNumber() const { return scalars[1]; }
  std::int16_t offsetAdjust2() const { return scalars[2]; }
  std::int16_t offsetAdjust3() const { return scalars[3]; }
  std::int16_t chromaGainCb() const { return scalars[4]; }
  std::int16_t chromaGainCr() const { return scalars[5]; }
  std::int16_t colourGainScale() const { return scalars[6]; }

  /// Unpacks the file's table stream; DEIMG_BAD_TUNING for an unknown layout.
  [[nodiscard]] Result Load(const ImageProps& props);
};

/// Derives everything. DEIMG_BAD_TUNING for an unknown table layout, an empty group or a neutral
/// colour gain of 0; DEIMG_UNSUPPORTED for a level outside -1 to 1.
[[nodiscard]] Result DeriveTables(const ImageProps& props, const DevelopSettings& settings,
                                  DevelopmentTables& tables);

/// Linear interpolation in 1/4096 steps between `a` at the lower and `b` at the upper key; `dHi` is
/// the distance up to the upper key, `dLo` the one down to the lower.
[[nodiscard]] std::int32_t Interpolate(std::int32_t a, std::int32_t b, std::int32_t dHi,
                                       std::int32_t dLo);

/// Looks a group up at temperature `t`: linear between two keys, constant beyond the first and the
/// last valid one. DEIMG_BAD_TUNING when the group is empty.
template <std::size_t n>
[[nodiscard]] Result LookUp(const TuningTables::Group<n>& group, std::int32_t t,
                            std::array<std::int16_t, n>& values);

extern template Result LookUp(const TuningTables::Group<3>&, std::int32_t,
                              std::array<std::int16_t, 3>&);
extern template Result LookUp(const TuningTables::Group<12>&, std::int32_t,
                              std::array<std::int16_t, 12>&);

}  // namespace deimg

#endif  // DEIMG_PIPELINE_DEVELOPMENT_TABLES_H

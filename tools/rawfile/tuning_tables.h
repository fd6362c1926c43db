/// The camera's colour tables: sampled at a few colour temperatures, interpolated in between.
#ifndef DEIMG_RAWFILE_TUNING_TABLES_H
#define DEIMG_RAWFILE_TUNING_TABLES_H

#include <array>

#include "rawfile/words.h"

namespace deimg::rawfile {

constexpr size_t kTuningTablesSize = 1364;

/// Values at one colour temperature.
template <size_t N>
struct TemperatureRecord {
  int32_t kelvin = -1;  ///< ascending within a group; -1 ends the group
  int16_t groupTag = 0;
  std::array<int16_t, N> values{};
};

template <size_t N>
using TemperatureGroup = std::array<TemperatureRecord<N>, 7>;

/// What the tuning tables hold. Groups of three are for the levels -1, 0, 1.
struct TuningTables {
  int16_t unread0 = 5739;
  int16_t layout = 16;             ///< any other value: the file is refused
  int16_t blueOffset = 0;          ///< third colour offset of the neutral record becomes this
  int16_t redOffset = 0;           ///< fourth colour offset of the neutral record becomes this
  int16_t secondChromaGain = 128;  ///< gain of blue minus luminance, 128 = 1
  int16_t firstChromaGain = 128;   ///< gain of red minus luminance, 128 = 1
  int16_t chromaGainScale = 128;   ///< first colour gain of the neutral record becomes this
  std::array<int16_t, 2> unread7 = {128, 128};

  /// Colour matrix, 2048 = 1, by matrixLevel: m0, m3 (first colour difference: red and second
  /// green), m4 to m7 (luminance: red, first green, blue, second green), m8, m11 (second colour
  /// difference: red and second green). m1 = -m0, m2 = -m3, m9 = -m8, m10 = -m11.
  std::array<TemperatureGroup<8>, 3> matrices;
  /// Hue corrections by colourLevel, four each. The neutral record is [1][1].
  std::array<TemperatureGroup<4>, 3> colourOffsets;
  /// Chroma gain curve by matrixLevel, seven each: gain of weak chroma (not 0 in the neutral record
  /// [1][1]), gain at the knee, knee, slope before, slope behind (sixteenths), second knee, change
  /// of slope there (sixty-fourths). 128 = 1.
  std::array<TemperatureGroup<7>, 3> colourGains;
  /// Shares of red, green and blue in the luminance, 256 = 1.
  TemperatureGroup<3> luminanceWeights;
};

/// The words of the tables; 32-bit values have their low word first.
void Append(const TuningTables& tables, WordWriter& words);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_TUNING_TABLES_H

/// The camera's 3,030-byte tuning block with named fields: what every stage is adjusted with.
///
/// All words are 16 bits, little-endian in files of either byte order. "By set" means by
/// processingSet -1, 0, 1, 3; "by level" by toneLevel -1, 0, 1; "by class" by the sensitivity
/// 160, 192, 224, 256, 268.
#ifndef DEIMG_RAWFILE_TUNING_BLOCK_H
#define DEIMG_RAWFILE_TUNING_BLOCK_H

#include <array>

#include "rawfile/words.h"

namespace deimg::rawfile {

constexpr size_t kTuningBlockSize = 3030;
constexpr size_t kSets = 4;     ///< quality sets: processingSet -1, 0, 1, 3
constexpr size_t kLevels = 3;   ///< tone levels -1, 0, 1
constexpr size_t kClasses = 5;  ///< sensitivity classes

/// Demosaicking and detail filter, by set.
struct FilterTuning {
  int16_t detailSlopeShift = 3;     ///< 0 to 8: the detail gain rises by 32 >> this per step
  int16_t detailCoreLevel = 8;      ///< direction measure up to which detail is dropped
  int16_t directionThreshold = 64;  ///< the two greens change places below minus this
  int16_t detailGain = 8;           ///< detail added to the luminance, in eighths
  int16_t detailLoss = 0;           ///< detail taken off again in the mix, in eighths
  int16_t horizontalLpf = 24;       ///< one of 24, 33, 42, 55, 98, 111, 116, 125, 128; all the same
  int16_t verticalLpf = 28;         ///< kernel: one of 8, 9, 10, 15, 24, 26, 28
};

/// Coring and gain curve of one aperture correction: three lines over the magnitude i, the table
/// entry being (i * slope + offset) * 8.
struct ApertureCurve {
  int16_t knee1 = 0;  ///< end of the first line, in units of 4
  int16_t knee2 = 0;  ///< end of the second line, in units of 4
  /// Codes 0 to 11 for 0.375 0.5 0.625 0 0.75 1 1.25 1.5 1.75 2 2.5 3; a quarter of that is the
  /// slope of the first two lines, 1/2048 that of the last.
  std::array<int16_t, 3> slopeCodes = {3, 3, 3};
  std::array<int16_t, 3> offsets = {0, 0, 0};
};

/// Aperture correction and its gain over brightness, by set.
struct DetailTuning {
  int16_t horizontalCheck = 32;  ///< any other value: the file is refused
  int16_t verticalFilter = 0;    ///< 0: three lines, 5: seven lines
  int16_t verticalCheck = 6;     ///< any other value: the file is refused
  int16_t radialMode0 = 0;       ///< 0, 2, 3
  int16_t radialMode1 = 0;       ///< 0, 2
  int16_t radialBlend = 4;       ///< weight of the second smoothing, in eighths, not negative
  ApertureCurve horizontalNarrow, horizontalWide, vertical, radial, directional;
  int16_t gainRise = 0;                       ///< 0 to 3
  int16_t gainFall = 0;                       ///< 0 to 3
  int16_t gainEnd = 0;                        ///< 0 to 7
  int16_t negativeA = 0;                      ///< with negativeB: scale of negative detail,
  int16_t negativeB = 2;                      ///< 0 to 2, with negativeA = 1 also 3
  std::array<int16_t, kClasses> gainPeaks{};  ///< by class
};

/// One piece of a tone curve over d = input - 4 * start:
/// ((quadratic * d * d) / 512 + linear * d) / 64, shifted right, plus 32 * base.
struct ToneSegment {
  int16_t base = 0;
  int16_t linear = 0;
  int16_t quadratic = 0;
  int16_t mode = 0;     ///< RGB curves only; 1 doubles the quadratic term
  int16_t shift = 0;    ///< 1, 2, 3: shifted right by as much
  int16_t quarter = 0;  ///< 1: shifted right by 2
};

/// Luminance tone curve over 0 to 8191. Segments start at 0, 4 * knee, 1008, 1920, 3312 and
/// 4 * highlight.
struct LuminanceCurve {
  int16_t knee = 1;
  int16_t highlight = 1400;
  std::array<ToneSegment, 6> segments;
};

/// Tone curve of red, green and blue over -512 to 8191. Segments: below 0 (relative to the floor),
/// then from 0, 4 * knee, 1008, 1920, 3312 and 4 * highlight.
struct RgbCurve {
  int16_t floor = 0;
  int16_t knee = 1;
  int16_t highlight = 1400;
  std::array<ToneSegment, 7> segments;
};

/// Chroma over brightness, by class: 128 at medium levels, ramps towards black and white.
struct ChromaSuppression {
  int16_t unread = 0;
  int16_t darkCode = 0;    ///< 0 to 3
  int16_t slope3Code = 0;  ///< 0, 1, 2, 4, 5, 6, 7, 8, 11
  int16_t slope2Code = 0;  ///< as slope3Code
  int16_t kneeCode = 0;    ///< knee at this * 16, or'ed with 512 unless kneeBase is 1
  int16_t kneeGain = 128;
  int16_t kneeBase = 1;
  int16_t knee2Level = 1023;
  int16_t tailSlope = 0;  ///< in eighths
};

/// Luminance lowered where colours are strong, by level.
struct ChromaCorrection {
  int16_t blueGain = 0, blueShift = 0;
  int16_t redGain = 0, redShift = 0;
  int16_t redNegative = 0;
  int16_t thresholdShift = 0;
  int16_t unread = 0;
};

struct TuningBlock {
  int16_t smoothSelect = 0;  ///< 0: chroma smoothed over nine columns, else over seven
  int16_t greenChoice = 0;   ///< not 0: the colour differences follow the direction measure
  std::array<FilterTuning, kSets> filters;
  std::array<DetailTuning, kSets> details;
  std::array<std::array<LuminanceCurve, kClasses>, kLevels> luminanceCurves;
  std::array<std::array<RgbCurve, kClasses>, kLevels> rgbCurves;
  std::array<ChromaSuppression, kClasses> chromaSuppression;
  int16_t luminancePedestal = 512;                     ///< four times the pedestal of the mosaic
  std::array<int16_t, 3> blackOffsets = {32, 32, 32};  ///< red, green, blue; a quarter of it
  std::array<ChromaCorrection, kLevels> chromaCorrection;
};

/// The words of the block; the ones no stage reads are `words`' unread ones.
void Append(const TuningBlock& block, WordWriter& words);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_TUNING_BLOCK_H

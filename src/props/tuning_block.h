/// The camera's 3,030-byte tuning block: what every stage is adjusted with, as named fields.
///
/// This is the one place that knows where each value lies: the structures hold the block's 16-bit
/// words in the file's order. "By set" means by processing set -1, 0, 1, 3 (a set index of 0 to 3);
/// "by level" by tone level -1, 0, 1; "by class" by the sensitivity 160, 192, 224, 256, 268.
#ifndef DEIMG_PROPS_TUNING_BLOCK_H
#define DEIMG_PROPS_TUNING_BLOCK_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/byte_order.h"

namespace deimg {

inline constexpr std::size_t kTuningSets = 4;
inline constexpr std::size_t kToneLevels = 3;
inline constexpr std::size_t kIsoClasses = 5;

/// Demosaicking and detail filter, by set.
struct FilterTuning {
  std::int16_t unread;
  std::uint16_t aFilterSlopeShift;  ///< 0 to 8: the detail gain rises by 32 >> this per step
  std::uint16_t aFilterCoreLevel;   ///< direction measure up to which detail is dropped
  std::int16_t directionThreshold;  ///< the two greens change places below minus this
  std::uint16_t detailGainLow;      ///< detail added to the luminance, in eighths
  std::uint16_t detailGainMix;      ///< detail taken off again in the mix, in eighths
  std::int16_t hokanLpfSelect;      ///< one of 24, 33, 42, 55, 98, 111, 116, 125, 128; all the same
  std::int16_t verLpfKernelSelect;  ///< kernel: one of 8, 9, 10, 15, 24, 26, 28
};

/// Coring and gain curve of one aperture correction: three lines over the magnitude i of detail, an
/// entry being (i x slope + offset) x 8.
struct ApcCurveParams {
  std::int16_t knee1;  ///< end of the first line, in units of 4
  std::int16_t knee2;  ///< end of the second line, in units of 4
  /// Codes 0 to 11 for 0.375 0.5 0.625 0 0.75 1 1.25 1.5 1.75 2 2.5 3; a quarter of that is the
  /// slope of the first two lines, 1/2048 that of the last.
  std::array<std::int16_t, 3> slopeCode;
  std::array<std::int16_t, 3> offset;
};

/// The gain of all detail over brightness: rises, holds 16 x peak, falls to 0 (128 = 1.0).
struct DetailGainTuning {
  std::uint16_t riseCode;  ///< 0 to 3: 0, 64, 32, 16 per level
  std::uint16_t fallCode;  ///< 0 to 3: 0, 16, 8, 4 per level
  std::uint16_t endCode;   ///< 0 to 7: level 1024, 800, 832, 864, 896, 928, 960, 992
  std::int16_t unread;
  std::int16_t negativeModeA;                  ///< with negativeModeB: scale of negative detail
  std::int16_t negativeModeB;                  ///< 0 to 2, with negativeModeA 1 also 3
  std::array<std::int16_t, kIsoClasses> peak;  ///< by class
};

/// Aperture correction, by set.
struct DetailTuning {
  std::int16_t unread0[2];
  std::int16_t hApcLayout;  ///< 32; any other value: the file is refused
  std::int16_t vApcFilter;  ///< 0: three lines, 5: seven lines
  std::int16_t vApcLayout;  ///< 6; any other value: the file is refused
  std::int16_t unread1;
  std::int16_t rApcHorizontalMode;  ///< 0, 2, 3
  std::int16_t rApcVerticalMode;    ///< 0, 2
  std::int16_t rApcBlend;           ///< weight of the second smoothing, in eighths, not negative
  std::int16_t unread2;
  ApcCurveParams hApcShort;  ///< of the high-pass over five columns
  ApcCurveParams hApcLong;   ///< of the one over seven
  ApcCurveParams vApc;
  ApcCurveParams rApc;
  ApcCurveParams aApc;
  std::int16_t unread3;
  DetailGainTuning gain;
};

/// One piece of a tone curve over d = input - 4 x start:
/// ((quadratic x d x d) / 512 + linear x d) / 64, shifted right, plus 32 x base.
struct ToneSegment {
  std::int16_t base;
  std::int16_t linear;
  std::int16_t quadratic;
  std::int16_t shift;    ///< 1, 2, 3: shifted right by as much
  std::int16_t quarter;  ///< 1: shifted right by 2
};

/// A piece of an RGB tone curve. The mode 1 doubles the quadratic term.
struct RgbToneSegment {
  std::int16_t base;
  std::int16_t linear;
  std::int16_t quadratic;
  std::int16_t mode;
  std::int16_t shift;
  std::int16_t quarter;
};

/// Luminance tone curve over 0 to 8191. Segments start at 0, 4 x knee, 1008, 1920, 3312 and
/// 4 x highlight.
struct LuminanceToneTuning {
  std::int16_t knee;
  std::array<ToneSegment, 5> segments;
  std::int16_t highlight;
  ToneSegment last;
};

/// Tone curve of red, green and blue over -512 to 8191. Segments: below 0 (relative to the floor),
/// then from 0, 4 x knee, 1008, 1920, 3312 and 4 x highlight.
struct RgbToneTuning {
  std::int16_t floor;
  RgbToneSegment negative;
  std::int16_t knee;
  std::array<RgbToneSegment, 5> segments;
  std::int16_t highlight;
  ToneSegment last;
  std::int16_t lastMode;
};

/// Chroma over brightness, by class: 128 at medium levels, ramps towards black and white.
struct ChromaSuppression {
  std::uint16_t unread;
  std::uint16_t darkCode;    ///< 0 to 3
  std::uint16_t slope3Code;  ///< 0, 1, 2, 4, 5, 6, 7, 8, 11
  std::uint16_t slope2Code;  ///< as slope3Code
  std::uint16_t kneeCode;    ///< knee at this x 16, or'ed with 512 unless kneeBase is 1
  std::uint16_t kneeGain;
  std::uint16_t kneeBase;
  std::uint16_t knee2Level;
  std::uint16_t tailSlope;  ///< in eighths
};

/// Luminance lowered where colours are strong, by level.
struct ChromaCorrectionTuning {
  std::uint16_t blueGain, blueShift;
  std::uint16_t redGain, redShift;
  std::uint16_t redNegative;     ///< 1: the red gain is negative
  std::uint16_t thresholdShift;  ///< a threshold of 16 << this; none for 0
  std::uint16_t unread;
};

struct TuningBlock {
  static constexpr std::size_t kSize = 3030;

  std::int16_t unread0[4];
  std::int16_t smoothSelect;  ///< 0: colours smoothed over nine columns, else over seven
  std::int16_t unread1[3];
  std::int16_t greenChoiceEnable;  ///< not 0: colour differences follow the direction measure
  std::int16_t unread2;
  std::array<FilterTuning, kTuningSets> filters;
  std::array<DetailTuning, kTuningSets> details;
  std::array<std::array<LuminanceToneTuning, kIsoClasses>, kToneLevels> luminanceTone;
  std::array<std::array<RgbToneTuning, kIsoClasses>, kToneLevels> rgbTone;
  std::array<ChromaSuppression, kIsoClasses> chromaSuppression;
  std::int16_t luminancePedestal;       ///< four times the pedestal of the mosaic
  std::int16_t blackR, blackG, blackB;  ///< black offsets, a quarter of the linear scale
  std::array<ChromaCorrectionTuning, kToneLevels> chromaCorrection;

  using Words = std::array<std::uint16_t, kSize / 2>;

  /// The block of a file, whose words are little-endian whatever the file's byte order.
  static TuningBlock Load(const std::uint8_t (&bytes)[kSize]) {
    Words words{};
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = LoadU16(bytes + 2 * i, false);
    return std::bit_cast<TuningBlock>(words);
  }
};
static_assert(sizeof(TuningBlock) == TuningBlock::kSize);
static_assert(offsetof(TuningBlock, filters) == 20);
static_assert(offsetof(TuningBlock, details) == 84 && sizeof(DetailTuning) == 124);
static_assert(offsetof(DetailTuning, hApcShort) == 20 && offsetof(DetailTuning, gain) == 102);
static_assert(offsetof(TuningBlock, luminanceTone) == 580 && sizeof(LuminanceToneTuning) == 64);
static_assert(offsetof(TuningBlock, rgbTone) == 1540 && sizeof(RgbToneTuning) == 90);
static_assert(offsetof(TuningBlock, chromaSuppression) == 2890);
static_assert(offsetof(TuningBlock, chromaCorrection) == 2988);

}  // namespace deimg

#endif  // DEIMG_PROPS_TUNING_BLOCK_H

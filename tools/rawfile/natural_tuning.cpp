#include "rawfile/natural_tuning.h"

#include <cmath>

#include "rawfile/tone_curves.h"

namespace deimg::rawfile {
namespace {

constexpr std::array<double, kToneLevels> kToneExponents = {0.93, 1.0, 1.1};
constexpr std::array<double, kToneLevels> kChromaScales = {0.88, 1.0, 1.12};

int16_t Rounded(double value) { return static_cast<int16_t>(std::lround(value)); }

/// The transfer function of sRGB, linear to encoded.
double EncodeSrgb(double linear) {
  return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

/// Luminance and colour differences in the proportions of BT.601, the latter stronger by what the
/// sensor takes away; the planes have four times the scale of the result. `warm` strengthens the
/// reds for low colour temperatures.
std::array<int16_t, 8> MatrixValues(double chroma, double warm) {
  const double one = 512 * chroma / kSensorSaturation;
  return {Rounded(0.700 * one * warm), Rounded(0.110 * one), 154, 151, 56, 151,
          Rounded(-0.300 * one),       Rounded(-0.890 * one)};
}

TuningTables Tables() {
  TuningTables t;
  constexpr std::array<int32_t, 3> kKelvin = {3000, 5000, 7000};
  for (size_t i = 0; i < kKelvin.size(); ++i) {
    for (size_t level = 0; level < kToneLevels; ++level) {
      const auto tag = static_cast<int16_t>(static_cast<int>(level) - 1);
      const auto hue = static_cast<int16_t>(3 * tag);
      t.matrices[level][i] = {kKelvin[i], tag,
                              MatrixValues(kChromaScales[level], i == 0 ? 1.05 : 1)};
      t.colourOffsets[level][i] = {kKelvin[i], tag, {0, 0, hue, static_cast<int16_t>(-hue)}};
      // No change up to the strongest colours of the output space; beyond, the gain falls slowly.
      t.colourGains[level][i] = {kKelvin[i], tag, {128, 128, 128, 8, 4, 200, 4}};
    }
    t.luminanceWeights[i] = {kKelvin[i], 0, {77, 151, 28}};
  }
  return t;
}

/// Two lines through (0, 0) and flat from 4 * knee2 on: the slope code of the first line is for
/// weak detail, the second one for strong detail, which grows less.
ApcCurveParams Aperture(int16_t weakCode, int16_t knee1, int16_t strongCode, int16_t knee2) {
  constexpr double kSlopes[] = {0.375, 0.5, 0.625, 0, 0.75, 1, 1.25, 1.5, 1.75, 2, 2.5, 3};
  const double weak = kSlopes[weakCode] / 4, strong = kSlopes[strongCode] / 4;
  const double bend = weak * 4 * knee1, end = bend + strong * 4 * (knee2 - knee1);
  return {knee1,
          knee2,
          {weakCode, strongCode, 3},
          {0, Rounded(bend - strong * 4 * knee1), Rounded(end)}};
}

FilterTuning Filter(uint16_t slopeShift, uint16_t core, int16_t threshold, int16_t verticalLpf) {
  FilterTuning f = PlainFilter();
  f.aFilterSlopeShift = slopeShift;
  f.aFilterCoreLevel = core;
  f.directionThreshold = threshold;
  f.verLpfKernelSelect = verticalLpf;
  return f;
}

/// `peak`: gain of the corrections at medium brightness for the lowest sensitivity; it falls with
/// every class. `rApcCode`: slope code of the two-dimensional correction, 3 for none.
DetailTuning Detail(int16_t verticalFilter, int16_t peak, int16_t negative, int16_t rApcCode) {
  DetailTuning d = PlainDetail();
  d.vApcFilter = verticalFilter;
  d.rApcHorizontalMode = 3;
  d.rApcVerticalMode = 2;
  d.hApcShort = Aperture(1, 8, 0, 120);
  d.hApcLong = Aperture(0, 8, 0, 120);
  d.vApc = Aperture(0, 8, 0, 120);
  d.rApc = Aperture(rApcCode, 8, rApcCode, 120);
  d.aApc = Aperture(0, 8, 0, 160);
  d.gain.riseCode = 1;
  d.gain.fallCode = 1;
  d.gain.negativeModeA = 2;
  d.gain.negativeModeB = negative;
  for (size_t i = 0; i < kIsoClasses; ++i) {
    d.gain.peak[i] = static_cast<int16_t>(peak * (10 - static_cast<int>(i)) / 10);
  }
  return d;
}

TuningBlock Tuning() {
  TuningBlock block = PlainTuning();
  block.smoothSelect = 1;
  block.greenChoiceEnable = 1;
  block.filters = {Filter(3, 8, 32, 24), Filter(4, 0, 32, 28), Filter(3, 0, 32, 8),
                   Filter(3, 8, 32, 24)};
  block.details = {Detail(0, 16, 1, 3), Detail(5, 32, 2, 3), Detail(5, 44, 2, 0),
                   Detail(0, 16, 1, 3)};
  for (size_t level = 0; level < kToneLevels; ++level) {
    const auto tone = [level](double x) { return std::pow(EncodeSrgb(x), kToneExponents[level]); };
    block.luminanceTone[level].fill(FitLuminanceCurve(tone, 2 * kWhiteLevel));
    block.rgbTone[level].fill(FitRgbCurve(tone, kWhiteLevel));
    // Luminance comes from linear light, colour from encoded values: without a correction saturated
    // reds and blues would be too light.
    block.chromaCorrection[level] = {4, 1, 4, 1, 0, 4, 0};
  }
  // Noise takes the colour out of the shadows; clipping takes it out of the highlights.
  constexpr std::array<uint16_t, kIsoClasses> kDarkCodes = {0, 0, 1, 2, 3};
  for (size_t i = 0; i < kIsoClasses; ++i) {
    block.chromaSuppression[i] = {0, kDarkCodes[i], 1, 1, 28, 128, 0, 976, 32};
  }
  return block;
}

}  // namespace

PropertySet NaturalProperties() {
  PropertySet p;
  p.tables = Tables();
  p.tuning = Tuning();
  p.colourTemperatures = {5200, 5200, 5200, 6200, 3000, 4000, 5800, 5200};
  p.presetGains = {{{1536, 1024, 1028, 1280},
                    {1560, 1024, 1028, 1260},
                    {1680, 1024, 1028, 1150},
                    {1030, 1024, 1028, 2100},
                    {1320, 1024, 1028, 1700},
                    {1620, 1024, 1028, 1200},
                    {1536, 1024, 1028, 1280}}};
  p.blackLevels = {64, 62, 63, 64};
  return p;
}

}  // namespace deimg::rawfile

#include "rawfile/mosaic.h"

#include <algorithm>
#include <cmath>

#include "rawfile/natural_tuning.h"
#include "stages/tone_curves.h"

namespace deimg::rawfile {
namespace {

constexpr int kSampleMaximum = 4095;
constexpr uint64_t kPlaneMaximum = (1u << 30) - 1;  // samples; a plane is smaller than 2 GiB
constexpr int kOutputUnit = 32;                     // tone curve output per 8-bit level

using Linear = std::array<double, 3>;

int Evaluate(const LuminanceToneTuning& curve, int input) {
  return LuminanceToneCurve(input, curve);
}
int Evaluate(const RgbToneTuning& curve, int input) { return RgbToneCurve(input, curve); }

/// A rising tone curve backwards.
class InverseCurve {
 public:
  /// The curve over inputs from `firstInput` to 8191.
  template <typename Curve>
  InverseCurve(const Curve& curve, int firstInput) {
    constexpr double kInsideFlatEnd = 16;
    int input = firstInput;
    lowest_ = Evaluate(curve, input);
    while (input < kHighestLuminance && Evaluate(curve, input + 1) == lowest_) ++input;
    inputs_.push_back(input);
    for (int wanted = lowest_ + 1; wanted <= kHighestLuminance; ++wanted) {
      while (input < kHighestLuminance && Evaluate(curve, input) < wanted) ++input;
      const int upper = Evaluate(curve, input);
      if (upper < wanted) {
        inputs_.push_back(inputs_.back() + kInsideFlatEnd);
        break;
      }
      const int lower = Evaluate(curve, input - 1);
      inputs_.push_back(input - 1 + static_cast<double>(wanted - lower) / (upper - lower));
    }
  }

  /// The input that yields `output`, between those that yield less and more. Outputs below the
  /// curve get the input where it begins to rise, those above it one well inside its flat end.
  double At(int output) const {
    const int last = static_cast<int>(inputs_.size()) - 1;
    return inputs_[static_cast<size_t>(std::clamp(output - lowest_, 0, last))];
  }

 private:
  int lowest_;
  std::vector<double> inputs_;
};

/// Loss of luminance per unit of a strong colour difference; `shift` is 0 to 3.
double CorrectionGain(int gain, int shift) {
  return gain == 0 && shift == 0 ? 0 : ((8 * gain + 32) >> (3 - shift)) / 32.0;
}

/// Index into tables by tone level.
size_t LevelOf(const PropertySet& p) {
  if (p.toneLevel < -1 || p.toneLevel > 1)
    throw WriteError("no curves for the recorded tone level");
  return static_cast<size_t>(p.toneLevel + 1);
}

/// Index into tables by sensitivity class.
size_t ClassOf(const PropertySet& p) {
  constexpr std::array<int, kIsoClasses> kSensitivities = {160, 192, 224, 256, 268};
  const auto found = std::find(kSensitivities.begin(), kSensitivities.end(), int{p.sensitivity});
  if (found == kSensitivities.end()) throw WriteError("no class for the recorded sensitivity");
  return static_cast<size_t>(found - kSensitivities.begin());
}

/// Finds the white-balanced linear values that develop to a colour.
class ColourSolver {
 public:
  explicit ColourSolver(const PropertySet& p)
      : inverseLuminance_(p.tuning.luminanceTone[LevelOf(p)][ClassOf(p)], 0),
        inverseRgb_(p.tuning.rgbTone[LevelOf(p)][ClassOf(p)], kLowestLinear) {
    for (size_t i = 0; i < 3; ++i) {
      weights_[i] = p.tables.luminanceWeights[0].values[i] / 256.0;
    }
    const ChromaCorrectionTuning& c = p.tuning.chromaCorrection[LevelOf(p)];
    threshold_ = c.thresholdShift == 0 ? 0 : kOutputUnit << (c.thresholdShift - 1);
    redGain_ = CorrectionGain(c.redGain, c.redShift) * (c.redNegative == 1 ? -1 : 1);
    blueGain_ = CorrectionGain(c.blueGain, c.blueShift);
  }

  /// Luminance and colour differences are formed apart, the former from linear values, the latter
  /// behind the tone curve. So the encoded values whose differences are the colour's are all moved
  /// by the same amount until their linear luminance is right as well.
  Linear Solve(const uint8_t* rgb) const {
    std::array<int, 3> encoded;
    for (size_t i = 0; i < 3; ++i) encoded[i] = kOutputUnit * rgb[i] + kOutputUnit / 2;
    const auto [r, g, b] = encoded;
    const double cr = (512 * r - 429 * g - 83 * b) / 1024.0;
    const double cb = (-172 * r - 340 * g + 512 * b) / 1024.0;
    const double luminance = 0.299 * r + 0.587 * g + 0.114 * b +
                             redGain_ * std::max(0.0, cr - threshold_) +
                             blueGain_ * std::max(0.0, cb - threshold_);
    // The luminance curve takes twice the linear value.
    const double wanted = inverseLuminance_.At(static_cast<int>(luminance)) / 2;

    int low = -kHighestLuminance, high = kHighestLuminance;
    while (high - low > 1) {
      const int middle = (low + high) / 2;
      (LuminanceOf(Decode(encoded, middle)) < wanted ? low : high) = middle;
    }
    return AsSeen(Decode(encoded, high));
  }

 private:
  /// The sensor sees colours paler than they are; the colour matrix undoes that.
  static Linear AsSeen(const Linear& c) {
    const double grey = 0.300 * c[0] + 0.590 * c[1] + 0.110 * c[2];
    const auto seen = [grey](double value) { return grey + kSensorSaturation * (value - grey); };
    return {seen(c[0]), seen(c[1]), seen(c[2])};
  }
  Linear Decode(const std::array<int, 3>& encoded, int shift) const {
    return {inverseRgb_.At(encoded[0] + shift), inverseRgb_.At(encoded[1] + shift),
            inverseRgb_.At(encoded[2] + shift)};
  }
  double LuminanceOf(const Linear& c) const {
    return c[0] * weights_[0] + c[1] * weights_[1] + c[2] * weights_[2];
  }

  InverseCurve inverseLuminance_, inverseRgb_;
  Linear weights_;
  int threshold_;
  double redGain_, blueGain_;
};

/// The sensor value that a gain brings closest to a linear value; gains round down.
uint16_t SensorValue(double linear, int gain, int black) {
  const int below = static_cast<int>(std::max(linear, 0.0) * 1024 / gain);
  const auto error = [&](int value) {
    const int gained = value * gain / 1024;
    return std::abs(gained - linear);
  };
  const int value = error(below) <= error(below + 1) ? below : below + 1;
  return static_cast<uint16_t>(std::clamp(value + black, 0, kSampleMaximum));
}

/// Gain and black level by line parity and column parity.
struct Site {
  int colour;  // of the site: 0 red, 1 green, 2 blue
  int gain;
  int black;
};

std::array<std::array<Site, 2>, 2> Sites(const PropertySet& p) {
  if (p.wbPreset < 0 || p.wbPreset > 6) throw WriteError("no gains for the recorded preset");
  const auto& gains = p.presetGains[static_cast<size_t>(p.wbPreset)];
  const auto& black = p.blackLevels;
  for (const uint16_t gain : gains) {
    if (gain == 0) throw WriteError("a white-balance gain is 0");
  }
  return {{{Site{0, gains[0], black[1]}, Site{1, gains[1], black[0]}},
           {Site{1, gains[2], black[3]}, Site{2, gains[3], black[2]}}}};
}

}  // namespace

void SetPicture(const PictureSource& picture, RawFile& file) {
  // Blocks of 64 samples fill the plane when its sides are multiples of 16 and 4.
  const uint64_t planeWidth = (picture.width + 2ull * kPictureBorder + 15) / 16 * 16;
  const uint64_t planeHeight = (picture.height + 2ull * kPictureBorder + 3) / 4 * 4;
  if (picture.width == 0 || picture.height == 0) throw WriteError("the picture is empty");
  if (planeWidth > 0xFFFF || planeHeight > 0xFFFF || planeWidth * planeHeight > kPlaneMaximum) {
    throw WriteError("the picture is larger than a sensor plane can be");
  }
  const ColourSolver solver(file.properties);
  const auto sites = Sites(file.properties);

  Plane plane{static_cast<uint32_t>(planeWidth), static_cast<uint32_t>(planeHeight), {}};
  plane.samples.resize(size_t{plane.width} * plane.height);
  std::vector<uint8_t> line(size_t{picture.width} * 3);
  std::vector<Linear> solved(picture.width);
  uint32_t solvedLine = picture.height;
  for (uint32_t y = 0; y < plane.height; ++y) {
    const uint32_t pictureY =
        std::clamp(y, kPictureBorder, kPictureBorder + picture.height - 1) - kPictureBorder;
    if (pictureY != solvedLine) {
      picture.readLine(pictureY, line);
      for (size_t x = 0; x < picture.width; ++x) {
        const bool same = x > 0 && std::equal(&line[3 * x], &line[3 * x] + 3, &line[3 * x] - 3);
        solved[x] = same ? solved[x - 1] : solver.Solve(&line[3 * x]);
      }
      solvedLine = pictureY;
    }
    for (uint32_t x = 0; x < plane.width; ++x) {
      const uint32_t pictureX =
          std::clamp(x, kPictureBorder, kPictureBorder + picture.width - 1) - kPictureBorder;
      const Site& site = sites[y % 2][x % 2];
      plane.samples[size_t{plane.width} * y + x] =
          SensorValue(solved[pictureX][static_cast<size_t>(site.colour)], site.gain, site.black);
    }
  }
  file.SetPlane(std::move(plane));
  file.properties.sensor.area = {kPictureBorder, kPictureBorder,
                                 static_cast<uint16_t>(kPictureBorder + picture.width - 1),
                                 static_cast<uint16_t>(kPictureBorder + picture.height - 1)};
}

RawFile PictureFile(const PictureSource& picture) {
  RawFile file;
  file.properties = NaturalProperties();
  SetPicture(picture, file);
  return file;
}

}  // namespace deimg::rawfile

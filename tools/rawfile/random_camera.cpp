#include "rawfile/random_camera.h"

#include <algorithm>
#include <initializer_list>
#include <random>

namespace deimg::rawfile {
namespace {

/// Draws that come out the same everywhere (the distributions of <random> do not).
class Dice {
 public:
  explicit Dice(uint64_t seed) : engine_(seed), wild_(OneIn(3)) {}

  /// From low to high, both included.
  int Range(int low, int high) {
    const auto span = static_cast<uint64_t>(int64_t{high} - low + 1);
    return static_cast<int>(low + static_cast<int64_t>(engine_() % span));
  }
  int16_t Word(int low, int high) { return static_cast<int16_t>(Range(low, high)); }
  uint16_t Unsigned(int low, int high) { return static_cast<uint16_t>(Range(low, high)); }
  /// From low to high; wild cameras now and then take any other value.
  int16_t Free(int low, int high, int wildLow = -32768, int wildHigh = 32767) {
    return wild_ && OneIn(4) ? Word(wildLow, wildHigh) : Word(low, high);
  }
  /// Free for words that are read without a sign.
  uint16_t FreeUnsigned(int low, int high, int wildLow = -32768, int wildHigh = 32767) {
    return static_cast<uint16_t>(Free(low, high, wildLow, wildHigh));
  }
  bool OneIn(int n) { return Range(1, n) == 1; }
  int16_t Pick(std::initializer_list<int16_t> values) {
    return values.begin()[Range(0, static_cast<int>(values.size()) - 1)];
  }
  uint16_t PickUnsigned(std::initializer_list<int16_t> values) {
    return static_cast<uint16_t>(Pick(values));
  }
  Bytes Noise(int minSize, int maxSize) {
    Bytes bytes(static_cast<size_t>(Range(minSize, maxSize)));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(engine_());
    return bytes;
  }
  template <typename T>
  void Shuffle(std::vector<T>& values) {
    for (size_t i = values.size(); i > 1; --i) {
      std::swap(values[i - 1], values[static_cast<size_t>(engine_() % i)]);
    }
  }

 private:
  std::mt19937_64 engine_;
  bool wild_;
};

// ---- tuning -----------------------------------------------------------------------------------

FilterTuning RandomFilter(Dice& dice) {
  FilterTuning f = PlainFilter();
  f.aFilterSlopeShift = dice.Unsigned(0, 8);
  f.aFilterCoreLevel = dice.FreeUnsigned(0, 64, 0, 400);
  f.directionThreshold = dice.Free(-20, 300);
  f.detailGainLow = dice.FreeUnsigned(0, 16);
  f.detailGainMix = dice.FreeUnsigned(0, 8);
  f.hokanLpfSelect = dice.Pick({24, 33, 42, 55, 98, 111, 116, 125, 128});
  f.verLpfKernelSelect = dice.Pick({8, 9, 10, 15, 24, 26, 28});
  return f;
}

ApcCurveParams RandomAperture(Dice& dice) {
  ApcCurveParams curve{};
  curve.knee1 = dice.Free(0, 40, 0, 32767);
  curve.knee2 = dice.Free(20, 400, 0, 32767);
  for (int16_t& code : curve.slopeCode) code = dice.Free(0, 11);
  for (int16_t& offset : curve.offset) offset = dice.Free(-40, 80);
  return curve;
}

DetailTuning RandomDetail(Dice& dice) {
  DetailTuning d = PlainDetail();
  d.vApcFilter = dice.Pick({0, 5});
  d.rApcHorizontalMode = dice.Pick({0, 2, 3});
  d.rApcVerticalMode = dice.Pick({0, 2});
  d.rApcBlend = dice.Free(0, 8, 0, 300);
  for (ApcCurveParams* curve : {&d.hApcShort, &d.hApcLong, &d.vApc, &d.rApc, &d.aApc}) {
    *curve = RandomAperture(dice);
  }
  d.gain.riseCode = dice.Unsigned(0, 3);
  d.gain.fallCode = dice.Unsigned(0, 3);
  d.gain.endCode = dice.Unsigned(0, 7);
  d.gain.negativeModeA = dice.Free(0, 2);
  d.gain.negativeModeB = dice.Word(0, d.gain.negativeModeA == 1 ? 3 : 2);
  for (int16_t& peak : d.gain.peak) peak = dice.Free(0, 60);
  return d;
}

/// Segments that rise more or less from one to the next.
class RandomSegments {
 public:
  explicit RandomSegments(Dice& dice) : dice_(dice), base_(dice.Range(-10, 4)) {}

  /// Fills the next segment and returns its mode, for those that have one.
  template <typename Segment>
  int16_t Fill(Segment& s) {
    s.base = dice_.Free(base_, base_ + 10);
    s.linear = dice_.Free(100, 1800);
    s.quadratic = dice_.Free(-300, 200);
    const int16_t mode = dice_.Free(0, 2);
    s.shift = dice_.Free(0, 4);
    s.quarter = dice_.Free(0, 2);
    base_ += dice_.Range(20, 50);
    return mode;
  }

 private:
  Dice& dice_;
  int base_;
};

ChromaSuppression RandomSuppression(Dice& dice) {
  ChromaSuppression s{};
  s.unread = dice.Unsigned(0, 65535);
  s.darkCode = dice.Unsigned(0, 3);
  s.slope3Code = dice.PickUnsigned({0, 1, 2, 4, 5, 6, 7, 8, 11});
  s.slope2Code = dice.PickUnsigned({0, 1, 2, 4, 5, 6, 7, 8, 11});
  s.kneeCode = dice.Unsigned(0, 63);
  s.kneeGain = dice.FreeUnsigned(40, 128, 0, 300);
  s.kneeBase = dice.FreeUnsigned(0, 1);
  s.knee2Level = dice.Unsigned(0, 1023);
  s.tailSlope = dice.FreeUnsigned(0, 64, 0, 32767);
  return s;
}

ChromaCorrectionTuning RandomCorrection(Dice& dice) {
  ChromaCorrectionTuning c{};
  c.blueGain = dice.FreeUnsigned(0, 8, 0, 255);
  c.blueShift = dice.FreeUnsigned(0, 3, 0, 40);
  c.redGain = dice.FreeUnsigned(0, 8, 0, 255);
  c.redShift = dice.FreeUnsigned(0, 3, 0, 40);
  c.redNegative = dice.FreeUnsigned(0, 1);
  c.thresholdShift = dice.FreeUnsigned(0, 8, 0, 40);
  c.unread = dice.Unsigned(0, 65535);
  return c;
}

TuningBlock RandomTuning(Dice& dice) {
  TuningBlock block = PlainTuning();
  block.smoothSelect = dice.Free(0, 1);
  block.greenChoiceEnable = dice.Free(0, 1);
  for (FilterTuning& filter : block.filters) filter = RandomFilter(dice);
  for (DetailTuning& detail : block.details) detail = RandomDetail(dice);
  for (auto& level : block.luminanceTone) {
    for (LuminanceToneTuning& curve : level) {
      curve.knee = dice.Free(1, 251);
      curve.highlight = dice.Free(829, 2047);
      RandomSegments segments(dice);
      for (ToneSegment& segment : curve.segments) segments.Fill(segment);
      segments.Fill(curve.last);
    }
  }
  for (auto& level : block.rgbTone) {
    for (RgbToneTuning& curve : level) {
      curve.floor = dice.Free(-128, 0);
      curve.knee = dice.Free(1, 251);
      curve.highlight = dice.Free(829, 2047);
      RandomSegments segments(dice);
      curve.negative.mode = segments.Fill(curve.negative);
      for (RgbToneSegment& segment : curve.segments) segment.mode = segments.Fill(segment);
      curve.lastMode = segments.Fill(curve.last);
    }
  }
  for (ChromaSuppression& entry : block.chromaSuppression) entry = RandomSuppression(dice);
  block.luminancePedestal = dice.Free(0, 1024);
  for (int16_t* offset : {&block.blackR, &block.blackG, &block.blackB}) *offset = dice.Free(0, 64);
  for (ChromaCorrectionTuning& entry : block.chromaCorrection) entry = RandomCorrection(dice);
  return block;
}

/// Ascending keys for one to seven records; the records behind the last are never used.
template <size_t N>
void RandomKeys(Dice& dice, TemperatureGroup<N>& group) {
  const int count = dice.Range(1, 7);
  int32_t kelvin = dice.Range(1000, 5000);
  for (int i = 0; i < count; ++i) {
    group[static_cast<size_t>(i)].kelvin = kelvin;
    kelvin += dice.OneIn(8) ? dice.Range(1, 500000) : dice.Range(1, 3000);
  }
  for (TemperatureRecord<N>& record : group) record.groupTag = dice.Word(-32768, 32767);
}

TuningTables RandomTables(Dice& dice) {
  TuningTables t;
  t.blueOffset = dice.Free(-60, 60);
  t.redOffset = dice.Free(-60, 60);
  t.secondChromaGain = dice.Free(60, 200);
  t.firstChromaGain = dice.Free(60, 200);
  t.chromaGainScale = dice.Free(60, 200);
  for (auto& group : t.matrices) {
    RandomKeys(dice, group);
    for (auto& record : group) {
      record.values = {dice.Free(200, 1200), dice.Free(-300, 300),  dice.Free(50, 400),
                       dice.Free(0, 300),    dice.Free(-250, 250),  dice.Free(150, 500),
                       dice.Free(-400, 200), dice.Free(-1200, -200)};
    }
  }
  for (auto& group : t.colourOffsets) {
    RandomKeys(dice, group);
    for (auto& record : group) {
      for (int16_t& value : record.values) value = dice.Free(-40, 40);
    }
  }
  for (auto& group : t.colourGains) {
    RandomKeys(dice, group);
    for (auto& record : group) {
      record.values = {dice.Free(40, 200, 1, 32767),
                       dice.Free(20, 200, -300, 300),
                       dice.Word(0, 100),
                       dice.Free(1, 64, 1, 32767),
                       dice.Free(0, 64, -200, 200),
                       dice.Word(101, 255),
                       dice.Free(-64, 64)};
    }
  }
  RandomKeys(dice, t.luminanceWeights);
  for (auto& record : t.luminanceWeights) {
    record.values = {dice.Free(0, 200), dice.Free(50, 250), dice.Free(0, 150)};
  }
  return t;
}

// ---- picture ----------------------------------------------------------------------------------

/// Noise, smooth shading, edges or extremes. The samples behind the last whole block stay 0.
Plane RandomPlane(Dice& dice, uint32_t width, uint32_t height) {
  Plane plane{width, height, std::vector<uint16_t>(size_t{width} * height)};
  const int style = dice.Range(0, 4);
  const int level = dice.Range(100, 3500);
  const int slopeX = dice.Range(-20, 20);
  const int slopeY = dice.Range(-20, 20);
  const int edge = dice.Range(2, 17);
  const int noise = dice.Pick({0, 3, 40, 400});
  const size_t coded = plane.samples.size() / 64 * 64;
  for (size_t i = 0; i < coded; ++i) {
    const int x = static_cast<int>(i % width);
    const int y = static_cast<int>(i / width);
    int value = level + slopeX * x + slopeY * y;
    if (style == 1) value = dice.Range(0, 4095);
    if (style == 2) value = dice.OneIn(2) ? 0 : 4095;
    if (style == 3 && (x / edge + y / edge) % 2 == 0) value /= 4;
    if (noise != 0) value += dice.Range(-noise, noise);
    plane.samples[i] = static_cast<uint16_t>(std::clamp(value, 0, 4095));
  }
  return plane;
}

/// Any rectangle of at least `size` columns and lines inside width x height.
Rectangle RandomArea(Dice& dice, uint32_t width, uint32_t height, int size) {
  const int w = dice.Range(std::min(size, static_cast<int>(width)), static_cast<int>(width));
  const int h = dice.Range(std::min(size, static_cast<int>(height)), static_cast<int>(height));
  const uint16_t left = dice.Unsigned(0, static_cast<int>(width) - w);
  const uint16_t top = dice.Unsigned(0, static_cast<int>(height) - h);
  return {left, top, static_cast<uint16_t>(left + w - 1), static_cast<uint16_t>(top + h - 1)};
}

void RandomGeometry(Dice& dice, const RandomLimits& limits, RawFile& file) {
  const uint32_t minWidth = std::max(limits.minWidth, limits.previewable ? 120u : 16u);
  const uint32_t minHeight = std::max(limits.minHeight, limits.previewable ? 96u : 2u);
  const auto draw = [&dice](uint32_t low, uint32_t high) {
    return static_cast<uint32_t>(
        dice.Range(static_cast<int>(low), static_cast<int>(std::max(low, high))));
  };
  const uint32_t width = draw(minWidth, limits.maxWidth) & ~1u;
  const uint32_t height = draw(minHeight, limits.maxHeight);
  file.SetPlane(RandomPlane(dice, width, height));
  file.properties.sensor.area = RandomArea(dice, width, height, limits.previewable ? 48 : 1);
  file.properties.sensor.auxiliary = RandomArea(dice, width, height, 1);
}

// ---- file -------------------------------------------------------------------------------------

void RandomSettings(Dice& dice, PropertySet& p) {
  p.sensitivity = dice.Pick({160, 192, 224, 256, 268});
  p.wbPreset = dice.Word(0, 6);
  p.toneLevel = dice.Word(-1, 1);
  p.matrixLevel = dice.Word(-1, 1);
  p.processingSet = dice.Pick({-1, 0, 1, 3});
  p.colourLevel = dice.Word(-1, 1);
  for (uint16_t& kelvin : p.colourTemperatures) {
    kelvin = dice.OneIn(8) ? dice.Unsigned(0, 65535) : dice.Unsigned(2000, 9000);
  }
  for (auto& gains : p.presetGains) {
    for (uint16_t& gain : gains) gain = static_cast<uint16_t>(dice.Free(600, 3000));
  }
  for (uint16_t& black : p.blackLevels) black = static_cast<uint16_t>(dice.Free(0, 300));
}

void RandomPlacing(Dice& dice, RawFile& file) {
  PropertySet& p = file.properties;
  p.unreadSeed = static_cast<uint32_t>(dice.Range(1, 1 << 30));
  dice.Shuffle(p.order);
  const auto subHeapTag = [&dice] {
    const int type = dice.Pick({0x2000, 0x2800, 0x3000});
    return static_cast<uint16_t>(type | dice.Range(0, 0x7FF));
  };
  std::vector<uint16_t> path;
  for (const uint16_t tag : p.order) {
    if (dice.OneIn(3)) path.clear();
    if (path.size() < 3 && dice.OneIn(3)) path.push_back(subHeapTag());
    if (!path.empty()) p.paths[tag] = path;
    if (tag != kTagUnreadPair && dice.OneIn(4)) {
      p.trailing[tag] = dice.Noise(1, 700);
    }
  }
  for (int i = dice.Range(0, 4); i > 0; --i) {
    // Tags that are neither sub-heaps nor one of the fourteen: those have bits 10 to 8 clear.
    ExtraProperty extra;
    extra.tag = static_cast<uint16_t>(dice.Pick({0x0700, 0x0F00, 0x1700, 0x1F00}) | i);
    extra.data = dice.Noise(0, 50);
    extra.first = dice.OneIn(2);
    p.extras.push_back(extra);
  }
  if (dice.OneIn(2)) {  // a second copy at the end, which loses against the first
    const uint16_t tag = dice.OneIn(2) ? kTagSensor : kTagTuningBlock;
    p.extras.push_back({tag, dice.Noise(0, 100), {}, false});
  }
  for (HeapLayout* layout : {&file.topLayout, &file.propertyLayout}) {
    layout->directoryFirst = dice.OneIn(2);
    layout->reverseRecords = dice.OneIn(2);
    layout->gap = static_cast<uint32_t>(dice.OneIn(2) ? dice.Range(0, 5) : 0);
  }
  for (uint8_t& byte : file.header) byte = static_cast<uint8_t>(dice.Range(0, 255));
  file.dataInHeader = dice.OneIn(3);
  if (dice.OneIn(2)) file.recordsBefore.emplace_back(uint16_t{0x1001}, dice.Noise(0, 99));
  if (dice.OneIn(2)) file.recordsBehind.emplace_back(kTagImageProperties, dice.Noise(0, 99));
}

void RandomCoding(Dice& dice, RawFile& file) {
  DecoderSettings& settings = file.properties.decoder;
  settings.codeSet = static_cast<uint32_t>(dice.OneIn(8) ? 0x10000 : dice.Range(0, 2));
  if (dice.OneIn(2)) {
    settings.dataSkip1 = dice.Unsigned(0, dice.OneIn(3) ? 65535 : 64);
    settings.dataSkip2 =
        dice.Unsigned(0, std::min(65535 - static_cast<int>(settings.dataSkip1), 64));
  }
  file.coding.stuffing = static_cast<uint8_t>(dice.Range(0, 255));
  file.coding.filler = static_cast<uint8_t>(dice.Range(0, 255));
  file.coding.runsToLastEntry = dice.OneIn(2);
}

}  // namespace

RawFile RandomCamera(uint64_t seed, const RandomLimits& limits) {
  Dice dice(seed);
  RawFile file;
  file.order = dice.OneIn(2) ? ByteOrder::kLittle : ByteOrder::kBig;
  RandomCoding(dice, file);
  RandomGeometry(dice, limits, file);
  RandomSettings(dice, file.properties);
  file.properties.tables = RandomTables(dice);
  file.properties.tuning = RandomTuning(dice);
  RandomPlacing(dice, file);
  return file;
}

}  // namespace deimg::rawfile

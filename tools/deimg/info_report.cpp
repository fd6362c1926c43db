#include "info_report.hpp"

#include <cstdio>

#include "failure.hpp"

namespace deimg::cli {
namespace {

constexpr uint32_t kLowBitsPosition = 26;
constexpr int kWidestLabel = 16;

double Factor(uint16_t gain) { return static_cast<double>(gain) / DEIMG_WB_GAIN_ONE; }

/// Colour temperature of a preset, in kelvin; -1 is the white-balance point.
uint16_t Kelvin(const RawInfo& info, int preset) {
  return info.props.colourTemperatures[preset + 1];
}

uint64_t LowBitsBytes(const RawInfo& info) { return PlaneBytes(info.geometry) / 8; }

uint64_t CodedDataPosition(const RawInfo& info) {
  return kLowBitsPosition + LowBitsBytes(info) + info.props.dataSkip1() + info.props.dataSkip2();
}

/// Coded data are read in one or three built-in code sets; every other number stands for the last.
uint32_t CodeSet(const RawInfo& info) { return std::min(info.props.codeSetIndex(), 2U); }

class Lines {
 public:
  template <typename... Values>
  void Add(const char* label, const char* format, Values... values) {
    char text[160];
    std::snprintf(text, sizeof text, format, values...);
    char head[40];
    std::snprintf(head, sizeof head, "  %-*s ", kWidestLabel, label);
    text_ += std::string(head) + text + "\n";
  }
  void AddLine(const std::string& line) { text_ += line + "\n"; }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

Json Rectangle(unsigned left, unsigned top, unsigned width, unsigned height) {
  return {{"left", left}, {"top", top}, {"width", width}, {"height", height}};
}

}  // namespace

std::string InfoText(const std::string& file, const RawInfo& info) {
  const ImageProps& p = info.props;
  const ImageGeometry& g = info.geometry;
  Lines lines;
  lines.AddLine(PrintableInput(file));
  lines.Add("picture", "%u x %u pixels (%.1f MP)", g.areaWidth, g.areaHeight,
            static_cast<double>(g.areaWidth) * g.areaHeight / 1e6);
  lines.Add("sensor", "%u x %u, picture from column %u, line %u on", g.sensorWidth, g.sensorHeight,
            g.areaLeft, g.areaTop);
  lines.Add("auxiliary area", "%u x %u from column %u, line %u on", g.auxWidth, g.auxHeight,
            g.auxLeft, g.auxTop);
  lines.Add("preview", "%u x %u pixels", info.reduced.areaWidth, info.reduced.areaHeight);
  if (const auto isoClass = SensitivityClass(info)) {
    lines.Add("sensitivity", "%u (class %s of 0 to 4)", p.sensitivity(),
              std::to_string(*isoClass).c_str());
  } else {
    lines.Add("sensitivity", "%u (not one of this camera's)", p.sensitivity());
  }
  lines.Add("white balance", "preset %d", p.recordedPreset());
  lines.Add("presets", "%7s %7s %7s %7s   %s", "red", "green", "green", "blue", "temperature");
  for (int i = 0; i < ImageProps::kPresets; ++i) {
    const uint16_t* const gains = p.presetGains[i];
    char label[16];
    std::snprintf(label, sizeof label, "%11d %s", i, i == p.recordedPreset() ? "*" : "");
    lines.Add(label, "%7.3f %7.3f %7.3f %7.3f   %u K", Factor(gains[0]), Factor(gains[1]),
              Factor(gains[2]), Factor(gains[3]), Kelvin(info, i));
  }
  lines.Add("point balance", "%u K", Kelvin(info, -1));
  lines.Add("tone", "%d", p.recordedToneLevel());
  lines.Add("saturation", "%d", p.recordedMatrixLevel());
  lines.Add("colour", "%d", p.recordedColourLevel());
  lines.Add("processing set", "%d", p.recordedProcessingSet());
  lines.Add("black levels", "%u %u %u %u", p.blackLevelWords[0], p.blackLevelWords[1],
            p.blackLevelWords[2], p.blackLevelWords[3]);
  lines.Add("code set", "%u", CodeSet(info));
  lines.Add("byte order", "%s", info.bigEndian ? "MM (big-endian)" : "II (little-endian)");
  lines.Add("bytes", "%llu: properties %u, low bits %llu, coded data from byte %llu on",
            static_cast<unsigned long long>(info.fileBytes), info.propertyBytes,
            static_cast<unsigned long long>(LowBitsBytes(info)),
            static_cast<unsigned long long>(CodedDataPosition(info)));
  return lines.text();
}

Json InfoJson(const RawInfo& info) {
  const ImageProps& p = info.props;
  const ImageGeometry& g = info.geometry;
  Json presets = Json::array();
  for (int i = 0; i < ImageProps::kPresets; ++i) {
    Json gains = Json::array();
    for (const uint16_t gain : p.presetGains[i]) gains.push_back(Factor(gain));
    presets.push_back({{"gains", gains}, {"kelvin", Kelvin(info, i)}});
  }
  Json isoClass = nullptr;
  if (const auto known = SensitivityClass(info)) isoClass = *known;
  return {{"bytes", info.fileBytes},
          {"byteOrder", info.bigEndian ? "MM" : "II"},
          {"width", g.areaWidth},
          {"height", g.areaHeight},
          {"sensor", {{"width", g.sensorWidth}, {"height", g.sensorHeight}}},
          {"imageArea", Rectangle(g.areaLeft, g.areaTop, g.areaWidth, g.areaHeight)},
          {"auxiliaryArea", Rectangle(g.auxLeft, g.auxTop, g.auxWidth, g.auxHeight)},
          {"preview", {{"width", info.reduced.areaWidth}, {"height", info.reduced.areaHeight}}},
          {"sensitivity", p.sensitivity()},
          {"sensitivityClass", isoClass},
          {"whiteBalancePreset", p.recordedPreset()},
          {"presets", presets},
          {"pointKelvin", Kelvin(info, -1)},
          {"tone", p.recordedToneLevel()},
          {"saturation", p.recordedMatrixLevel()},
          {"colour", p.recordedColourLevel()},
          {"processingSet", p.recordedProcessingSet()},
          {"blackLevels", p.blackLevelWords},
          {"codeSet", CodeSet(info)},
          {"propertyBytes", info.propertyBytes},
          {"lowBitsBytes", LowBitsBytes(info)},
          {"codedDataPosition", CodedDataPosition(info)}};
}

}  // namespace deimg::cli

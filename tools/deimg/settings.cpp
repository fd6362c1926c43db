#include "settings.hpp"

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "failure.hpp"

namespace deimg::cli {
namespace {

constexpr int kTenths = 10;
constexpr double kMostStops = 2.0;
constexpr int kPresets = 6;
constexpr double kLargestGain = 100.0;

template <typename Number>
std::optional<Number> Parse(std::string_view text) {
  Number value{};
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || last != end) return std::nullopt;
  return value;
}

/// Exactly `count` numbers with commas between them; empty when there are not.
template <typename Number>
std::vector<Number> ParseList(std::string_view text, size_t count) {
  std::vector<Number> values;
  for (;;) {
    const size_t comma = text.find(',');
    const std::optional<Number> value = Parse<Number>(text.substr(0, comma));
    if (!value) return {};
    values.push_back(*value);
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
  }
  return values.size() == count ? values : std::vector<Number>{};
}

[[noreturn]] void Refuse(const char* option, const std::string& why) {
  throw CLI::ValidationError(option, why);
}

void SetWhiteBalance(DevelopParams& params, const std::string& text) {
  const size_t colon = text.find(':');
  const std::string kind = text.substr(0, colon);
  const std::string value = colon == std::string::npos ? "" : text.substr(colon + 1);
  if (text == "recorded") {
    params.wbPreset = DEIMG_AS_RECORDED;
  } else if (kind == "preset") {
    const auto number = Parse<int>(value);
    if (!number || *number < 0 || *number > kPresets) {
      Refuse("--wb", "presets are numbered 0 to 6; 'deimg info' lists those of a file");
    }
    params.wbPreset = static_cast<int16_t>(*number);
  } else if (kind == "point") {
    const auto point = ParseList<int32_t>(value, 2);
    if (point.empty()) Refuse("--wb", "a point is two whole numbers: point:COLUMN,LINE");
    params.wbPreset = DEIMG_WB_POINT;
    params.wbPointX = point[0];
    params.wbPointY = point[1];
  } else if (kind == "gains") {
    const auto gains = ParseList<double>(value, 4);
    if (gains.empty()) Refuse("--wb", "gains are four numbers: gains:RED,GREEN1,GREEN2,BLUE");
    params.wbPreset = DEIMG_WB_GAINS;
    params.whiteBalance.wbGainsSet = 1;
    for (size_t i = 0; i < gains.size(); ++i) {
      if (!(gains[i] > 0 && gains[i] <= kLargestGain)) {
        Refuse("--wb", "gains lie above 0 and are at most 100");
      }
      params.whiteBalance.wbGains[i] =
          static_cast<uint32_t>(std::lround(gains[i] * DEIMG_WB_GAIN_ONE));
    }
  } else {
    Refuse("--wb", "choose recorded, preset:N, point:COLUMN,LINE or gains:RED,GREEN1,GREEN2,BLUE");
  }
}

int16_t ParseExposure(const std::string& text) {
  const auto stops = Parse<double>(text);
  if (!stops || !(std::fabs(*stops) <= kMostStops)) {
    Refuse("--exposure", "choose a number of stops from -2 to 2");
  }
  const double tenths = std::round(*stops * kTenths);
  if (std::fabs(tenths - *stops * kTenths) > 1e-6) {
    Refuse("--exposure", "exposure goes in tenths of a stop");
  }
  return static_cast<int16_t>(tenths);
}

int16_t ParseLevel(const char* option, const std::string& text) {
  if (text == "recorded") return DEIMG_AS_RECORDED;
  const auto level = Parse<int>(text);
  if (!level || *level < -1 || *level > 1) Refuse(option, "choose -1, 0, 1 or recorded");
  return static_cast<int16_t>(*level);
}

void AddLevel(CLI::App& command, const char* option, int16_t& field, const char* description) {
  command
      .add_option_function<std::string>(
          option, [&field, option](const std::string& text) { field = ParseLevel(option, text); },
          description)
      ->type_name("LEVEL")
      ->group("Picture");
}

}  // namespace

void Settings::AddTo(CLI::App& command, bool full) {
  const char* const group = "Picture";
  command
      .add_option_function<std::string>(
          "--wb", [this](const std::string& text) { SetWhiteBalance(params, text); },
          "White balance: recorded; preset:N, one of the file's own (see deimg info); point:X,Y, "
          "so that the 20 x 20 pixels from column X, line Y on become grey; or gains:R,G1,G2,B, "
          "factors for red, the two greens and blue. Default: recorded")
      ->type_name("BALANCE")
      ->group(group);
  command
      .add_option_function<std::string>(
          "--exposure",
          [this](const std::string& text) { params.exposureAdjust = ParseExposure(text); },
          "Brighten or darken by so many stops, -2 to 2 in tenths. Default: 0")
      ->type_name("STOPS")
      ->group(group);
  AddLevel(command, "--tone", params.toneLevel,
           "Tone curve: -1, 0, 1 or recorded. Default: recorded");
  AddLevel(command, "--saturation", params.matrixLevel,
           "Colour matrix and strength: -1, 0, 1 or recorded. Default: recorded");
  AddLevel(command, "--colour", params.colourLevel,
           "Colour balance of the rendering: -1, 0, 1 or recorded. Default: recorded");
  if (!full) return;
  command
      .add_option_function<std::string>(
          "--processing-set",
          [this](const std::string& text) {
            params.processingSet =
                text == "quick" ? int16_t{3} : ParseLevel("--processing-set", text);
          },
          "Detail and sharpness: -1, 0, 1, quick or recorded. Default: recorded")
      ->type_name("SET")
      ->group(group);
  command
      .add_flag_callback(
          "--plain", [this] { params.matrixSelect = 1; },
          "Plain processing: the built-in colour matrix, no refinements, no sharpening")
      ->group(group);
  command
      .add_flag_callback(
          "--no-colour-median", [this] { params.chromaMedian = -1; },
          "Leave out the median that cleans colour noise and false colours")
      ->group(group);
}

void Settings::RequireFits(const RawInfo& info) const {
  if (params.wbPreset != DEIMG_WB_POINT) return;
  const int width = info.geometry.areaWidth;
  const int height = info.geometry.areaHeight;
  if (params.wbPointX >= 0 && params.wbPointX < width && params.wbPointY >= 0 &&
      params.wbPointY < height) {
    return;
  }
  throw Failure("reading the white-balance point",
                "the point " + std::to_string(params.wbPointX) + "," +
                    std::to_string(params.wbPointY) + " lies outside the picture of " +
                    std::to_string(width) + " x " + std::to_string(height),
                DEIMG_UNSUPPORTED);
}

}  // namespace deimg::cli

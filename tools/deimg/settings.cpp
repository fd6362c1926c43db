#include "settings.hpp"

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "failure.hpp"
#include "help_formatter.hpp"

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

/// A word that an option takes, and what its field holds then. A flag takes no word.
struct Word {
  const char* text;
  int value;
};

enum Jobs { kEveryJob, kFullJob };

/// One option of the program, for one field of the library's settings or more.
struct Setting {
  const char* option;
  const char* value;  ///< what the help shows for its value; empty: a flag
  Jobs jobs;
  void (*set)(DevelopParams& params, const Setting& setting, const std::string& text);
  const char* help;
  std::vector<Word> words = {};  ///< all that it takes, unless `set` understands more than words
};

[[noreturn]] void Refuse(const Setting& setting, const std::string& why) {
  throw CLI::ValidationError(setting.option, why);
}

void SetWhiteBalance(DevelopParams& params, const Setting& setting, const std::string& text) {
  const size_t colon = text.find(':');
  const std::string kind = text.substr(0, colon);
  const std::string value = colon == std::string::npos ? "" : text.substr(colon + 1);
  if (text == "recorded") {
    params.wbPreset = DEIMG_AS_RECORDED;
  } else if (kind == "preset") {
    const auto number = Parse<int>(value);
    if (!number || *number < 0 || *number > kPresets) {
      Refuse(setting, "presets are numbered 0 to 6; 'deimg info' lists those of a file");
    }
    params.wbPreset = static_cast<int16_t>(*number);
  } else if (kind == "point") {
    const auto point = ParseList<int32_t>(value, 2);
    if (point.empty()) Refuse(setting, "a point is two whole numbers: point:COLUMN,LINE");
    params.wbPreset = DEIMG_WB_POINT;
    params.wbPointX = point[0];
    params.wbPointY = point[1];
  } else if (kind == "gains") {
    const auto gains = ParseList<double>(value, 4);
    if (gains.empty()) Refuse(setting, "gains are four numbers: gains:RED,GREEN1,GREEN2,BLUE");
    params.wbPreset = DEIMG_WB_GAINS;
    params.whiteBalance.wbGainsSet = 1;
    for (size_t i = 0; i < gains.size(); ++i) {
      if (!(gains[i] > 0 && gains[i] <= kLargestGain)) {
        Refuse(setting, "gains lie above 0 and are at most 100");
      }
      params.whiteBalance.wbGains[i] =
          static_cast<uint32_t>(std::lround(gains[i] * DEIMG_WB_GAIN_ONE));
    }
  } else {
    Refuse(setting, "choose recorded, preset:N, point:COLUMN,LINE or gains:RED,GREEN1,GREEN2,BLUE");
  }
}

void SetExposure(DevelopParams& params, const Setting& setting, const std::string& text) {
  const auto stops = Parse<double>(text);
  if (!stops || !(std::fabs(*stops) <= kMostStops)) {
    Refuse(setting, "choose a number of stops from -2 to 2");
  }
  const double tenths = std::round(*stops * kTenths);
  if (std::fabs(tenths - *stops * kTenths) > 1e-6) {
    Refuse(setting, "exposure goes in tenths of a stop");
  }
  params.exposureAdjust = static_cast<int16_t>(tenths);
}

template <auto kField>
void SetWord(DevelopParams& params, const Setting& setting, const std::string& text) {
  const auto number = Parse<int>(text);
  for (const Word& word : setting.words) {
    if (text == word.text || (number && number == Parse<int>(word.text))) {
      params.*kField = static_cast<std::remove_reference_t<decltype(params.*kField)>>(word.value);
      return;
    }
  }
  Refuse(setting, "choose " + Choices(setting.words, &Word::text));
}

const std::vector<Setting>& AllSettings() {
  using P = DevelopParams;
  constexpr Word kRecorded = {"recorded", DEIMG_AS_RECORDED};
  const std::vector<Word> levels = {{"-1", -1}, {"0", 0}, {"1", 1}, kRecorded};
  const std::vector<Word> sets = {{"-1", -1}, {"0", 0}, {"1", 1}, {"quick", 3}, kRecorded};
  const std::vector<Word> one = {{"", 1}};
  const std::vector<Word> minusOne = {{"", -1}};
  static const std::vector<Setting> settings = {
      {"--wb", "BALANCE", kEveryJob, SetWhiteBalance,
       "White balance: recorded; preset:N, one of the file's own (see deimg info); point:X,Y, so "
       "that the 20 x 20 pixels from column X, line Y on become grey; or gains:R,G1,G2,B, factors "
       "for red, the two greens and blue. Default: recorded"},
      {"--exposure", "STOPS", kEveryJob, SetExposure,
       "Brighten or darken by so many stops, -2 to 2 in tenths. Default: 0"},
      {"--tone", "LEVEL", kEveryJob, SetWord<&P::toneLevel>, "Tone curve", levels},
      {"--saturation", "LEVEL", kEveryJob, SetWord<&P::matrixLevel>, "Colour matrix and strength",
       levels},
      {"--colour", "LEVEL", kEveryJob, SetWord<&P::colourLevel>, "Colour balance of the rendering",
       levels},
      {"--processing-set", "SET", kFullJob, SetWord<&P::processingSet>, "Detail and sharpness",
       sets},
      {"--plain", "", kFullJob, SetWord<&P::matrixSelect>,
       "Plain processing: the built-in colour matrix, no refinements, no sharpening", one},
      {"--no-colour-median", "", kFullJob, SetWord<&P::chromaMedian>,
       "Leave out the median that cleans colour noise and false colours", minusOne},
  };
  return settings;
}

}  // namespace

void Settings::AddTo(CLI::App& command, bool full) {
  command.option_defaults()->group("Picture");
  for (const Setting& setting : AllSettings()) {
    if (setting.jobs == kFullJob && !full) continue;
    const auto set = [this, &setting](const std::string& text) {
      setting.set(params, setting, text);
    };
    const std::string words = Choices(setting.words, &Word::text);
    const std::string help = words.empty() ? "" : ": " + words + ". Default: recorded";
    if (*setting.value == '\0') {
      command.add_flag_callback(
          setting.option, [set] { set(""); }, setting.help);
    } else {
      command.add_option_function<std::string>(setting.option, set, setting.help + help)
          ->type_name(setting.value);
    }
  }
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

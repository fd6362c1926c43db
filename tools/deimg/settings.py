import re
p='settings.cpp'
s=open(p).read()
start=s.index('[[noreturn]] void Refuse'); end=s.index('void Settings::RequireFits')
new='''[[noreturn]] void Refuse(const char* option, const std::string& why) {
  throw CLI::ValidationError(option, why);
}

/// The preset to develop with; a point or gains go straight into their fields.
int ReadWhiteBalance(const char* option, const std::string& text, DevelopParams& params) {
  const size_t colon = text.find(':');
  const std::string kind = text.substr(0, colon);
  const std::string value = colon == std::string::npos ? "" : text.substr(colon + 1);
  if (text == "recorded") return DEIMG_AS_RECORDED;
  if (kind == "preset") {
    const auto number = Parse<int>(value);
    if (number && *number >= 0 && *number <= kPresets) return *number;
    Refuse(option, "presets are numbered 0 to 6; 'deimg info' lists those of a file");
  }
  if (kind == "point") {
    const auto point = ParseList<int32_t>(value, 2);
    if (point.empty()) Refuse(option, "a point is two whole numbers: point:COLUMN,LINE");
    params.wbPointX = point[0];
    params.wbPointY = point[1];
    return DEIMG_WB_POINT;
  }
  if (kind == "gains") {
    const auto gains = ParseList<double>(value, 4);
    if (gains.empty()) Refuse(option, "gains are four numbers: gains:RED,GREEN1,GREEN2,BLUE");
    params.whiteBalance.wbGainsSet = 1;
    for (size_t i = 0; i < gains.size(); ++i) {
      if (!(gains[i] > 0 && gains[i] <= kLargestGain)) {
        Refuse(option, "gains lie above 0 and are at most 100");
      }
      params.whiteBalance.wbGains[i] =
          static_cast<uint32_t>(std::lround(gains[i] * DEIMG_WB_GAIN_ONE));
    }
    return DEIMG_WB_GAINS;
  }
  Refuse(option, "choose recorded, preset:N, point:COLUMN,LINE or gains:RED,GREEN1,GREEN2,BLUE");
}

int ReadExposure(const char* option, const std::string& text, DevelopParams& /*params*/) {
  const auto stops = Parse<double>(text);
  if (!stops || !(std::fabs(*stops) <= kMostStops)) {
    Refuse(option, "choose a number of stops from -2 to 2");
  }
  const double tenths = std::round(*stops * kTenths);
  if (std::fabs(tenths - *stops * kTenths) > 1e-6) {
    Refuse(option, "exposure goes in tenths of a stop");
  }
  return static_cast<int>(tenths);
}

template <int kValue>
int Fixed(const char* /*option*/, const std::string& /*text*/, DevelopParams& /*params*/) {
  return kValue;
}

template <auto kField>
void Store(DevelopParams& params, int value) {
  params.*kField = static_cast<std::remove_cvref_t<decltype(params.*kField)>>(value);
}

enum Jobs { kEveryJob, kFullJob };

/// A word that an option takes, and the field's value for it.
struct Word {
  std::string text;
  int value;
};

struct Setting {
  const char* option;
  Jobs jobs;
  const char* value;  ///< what stands for its value in the help; empty: a flag
  const char* help;   ///< for an option that takes words: what comes before them
  void (*store)(DevelopParams& params, int value);
  std::vector<Word> words;  ///< empty: `read` gives the field's value
  int (*read)(const char* option, const std::string& text, DevelopParams& params) = nullptr;
};

const std::vector<Setting>& AllSettings() {
  static const std::vector<Word> levels = {
      {"-1", -1}, {"0", 0}, {"1", 1}, {"recorded", DEIMG_AS_RECORDED}};
}

'''

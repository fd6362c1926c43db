/// deimg-mkraw: makes raw files from pictures, from built-in scenes, or at random.
#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <new>

#include "mkraw/picture_file.h"
#include "rawfile/mosaic.h"
#include "rawfile/natural_tuning.h"
#include "rawfile/random_camera.h"

namespace {

using namespace deimg::rawfile;

constexpr int kUsageError = 2;

struct Options {
  std::string picture, scene, size, seed, output;
  std::string order = "II";
  uint32_t codeSet = 0;
  uint32_t skip = 0;
  int stuffing = 0;
  int black = -1;
  size_t isoClass = 0;
  int16_t preset = 0, toneLevel = 0, matrixLevel = 0, colourLevel = 0, processingSet = 0;
  bool subHeaps = false;
};

/// Columns and lines from "WxH".
std::pair<uint32_t, uint32_t> ParseSize(const std::string& text) {
  uint32_t width = 0, height = 0;
  const char* end = text.data() + text.size();
  auto parsed = std::from_chars(text.data(), end, width);
  const bool cross = parsed.ec == std::errc() && parsed.ptr != end && *parsed.ptr == 'x';
  if (cross) parsed = std::from_chars(parsed.ptr + 1, end, height);
  if (!cross || parsed.ec != std::errc() || parsed.ptr != end || width == 0 || height == 0) {
    throw CLI::ValidationError("--size", "'" + text + "' is not a size such as 3072x2048");
  }
  return {width, height};
}

RawFile MakeNaturalFile(const Options& options) {
  constexpr std::array<int16_t, deimg::kIsoClasses> kSensitivities = {160, 192, 224, 256, 268};
  RawFile file;
  file.order = options.order == "MM" ? ByteOrder::kBig : ByteOrder::kLittle;
  PropertySet& p = file.properties;
  p = NaturalProperties();
  p.sensitivity = kSensitivities[options.isoClass];
  p.wbPreset = options.preset;
  p.toneLevel = options.toneLevel;
  p.matrixLevel = options.matrixLevel;
  p.colourLevel = options.colourLevel;
  p.processingSet = options.processingSet;
  p.decoder = {options.codeSet, options.skip, 0};
  if (options.black >= 0) p.blackLevels.fill(static_cast<uint16_t>(options.black));
  if (options.subHeaps) {
    p.paths = {
        {kTagSensor, {0x2001}}, {kTagTuningTables, {0x2001, 0x2802}}, {kTagTuningBlock, {0x3003}}};
  }
  file.coding.stuffing = static_cast<uint8_t>(options.stuffing);

  if (options.scene.empty()) {
    const Picture picture = deimg::mkraw::ReadPicture(options.picture);
    SetPicture(SourceOf(picture), file);
  } else {
    const auto [width, height] = ParseSize(options.size);
    SetPicture(MakeScene(options.scene, width, height), file);
  }
  return file;
}

void Write(const std::string& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw std::runtime_error(path + ": cannot be created");
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) throw std::runtime_error(path + ": could not be written");
}

/// A file is replaced in one step, when everything has been written; anything else, such as a
/// device, is written to as it is.
void Save(const std::string& path, const Bytes& bytes) {
  namespace fs = std::filesystem;
  if (fs::exists(path) && !fs::is_regular_file(path)) return Write(path, bytes);
  const std::string part = path + ".part";
  try {
    Write(part, bytes);
    fs::rename(part, path);
  } catch (const std::exception&) {
    std::error_code ignored;
    fs::remove(part, ignored);
    throw;
  }
}

void AddOptions(CLI::App& app, Options& o) {
  const auto add = [&app](const char* group, const char* name, auto& value, const char* values,
                          const char* what) {
    return app.add_option(name, value, what)->option_text(values)->group(group);
  };
  app.add_option("PICTURE", o.picture, "PNG or PPM file to turn into a raw file")->type_name("");
  const char* kSource = "In place of a picture";
  add(kSource, "--scene", o.scene, "NAME", "built-in scene: chart, gradient or texture")
      ->check(CLI::IsMember({"chart", "gradient", "texture"}));
  add(kSource, "--size", o.size, "WxH", "size of the scene, such as 3072x2048");
  add(kSource, "--random", o.seed, "SEED", "random camera; takes no option but --output");

  add("Options", "-o,--output", o.output, "FILE", "raw file to write")->required();

  add("File", "--order", o.order, "II|MM", "byte order: little-endian (default) or big-endian")
      ->check(CLI::IsMember({"II", "MM"}));
  add("File", "--code-set", o.codeSet, "0-2", "prefix code of the sensor data (default 0)")
      ->check(CLI::Range(0, 2));
  add("File", "--stuffing", o.stuffing, "0-255", "byte that follows every 0xFF (default 0)")
      ->check(CLI::Range(0, 255));
  add("File", "--skip", o.skip, "0-65535", "unused bytes before the coded data (default 0)")
      ->check(CLI::Range(0, 65535));
  app.add_flag("--sub-heaps", o.subHeaps, "put some properties into nested heaps")->group("File");

  const char* kCamera = "Camera (recorded in the file)";
  add(kCamera, "--iso-class", o.isoClass, "0-4", "sensitivity class (default 0, the lowest)")
      ->check(CLI::Range(0, 4));
  add(kCamera, "--black", o.black, "0-1024", "black level of all sites (default 62 to 64)")
      ->check(CLI::Range(0, 1024));
  add(kCamera, "--preset", o.preset, "0-6", "white-balance preset (default 0)")
      ->check(CLI::Range(0, 6));
  add(kCamera, "--tone-level", o.toneLevel, "-1|0|1", "contrast (default 0)")
      ->check(CLI::Range(-1, 1));
  add(kCamera, "--matrix-level", o.matrixLevel, "-1|0|1", "strength of colours (default 0)")
      ->check(CLI::Range(-1, 1));
  add(kCamera, "--colour-level", o.colourLevel, "-1|0|1", "hue (default 0)")
      ->check(CLI::Range(-1, 1));
  add(kCamera, "--processing-set", o.processingSet, "-1|0|1|3", "quality; 3 is quick (default 0)")
      ->check(CLI::IsMember({-1, 0, 1, 3}));
}

/// What the options cannot say one by one.
void CheckTogether(const CLI::App& app, const Options& o) {
  if (!o.picture.empty() + !o.scene.empty() + !o.seed.empty() != 1) {
    throw CLI::ValidationError("give one of PICTURE, --scene and --random");
  }
  if (o.scene.empty() != o.size.empty()) {
    throw CLI::ValidationError("--scene and --size go together");
  }
  if (!o.seed.empty() && app.count_all() > 3) {  // the program's name counts as well
    throw CLI::ValidationError("--random takes no option but --output");
  }
}

RawFile MakeFile(const Options& options) {
  if (options.seed.empty()) return MakeNaturalFile(options);
  uint64_t seed = 0;
  const char* end = options.seed.data() + options.seed.size();
  const auto parsed = std::from_chars(options.seed.data(), end, seed);
  if (parsed.ec != std::errc() || parsed.ptr != end) {
    throw CLI::ValidationError("--random", "'" + options.seed + "' is not a whole number");
  }
  return RandomCamera(seed);
}

int Run(int argc, char** argv) {
  CLI::App app(
      "Makes raw files, for trying and testing where no camera is at hand.\n"
      "Developed as recorded, the file gives the picture back.",
      "deimg-mkraw");
  app.footer(
      "Examples:\n"
      "  deimg-mkraw holiday.png -o holiday.raw --order MM\n"
      "  deimg-mkraw --scene chart --size 3072x2048 -o chart.raw\n"
      "  deimg-mkraw --random 42 -o random42.raw\n\n"
      "Exit status: 0 done, 1 failed, 2 wrong use.");
  Options options;
  AddOptions(app, options);
  try {
    app.parse(argc, argv);
    CheckTogether(app, options);
    Save(options.output, Serialize(MakeFile(options)));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsageError;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("deimg-mkraw: not enough memory\n", stderr);
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "deimg-mkraw: %s\n", error.what());
    return 1;
  }
}

#include "scene.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <span>
#include <string>
#include <utility>

#include "rawfile/mosaic.h"
#include "rawfile/natural_tuning.h"
#include "rawfile/raw_file.h"

namespace deimg::bench {
namespace {

struct Reader {
  const std::vector<std::uint8_t>* file;
  std::size_t* position;
};

/// A scene shows a developed sample, enlarged and tiled, with noise of a standard deviation.
struct Recipe {
  std::string_view name;
  const char* sample;
  std::uint32_t zoom;
  int noise;
  std::uint32_t codeSet;
};
constexpr Recipe kRecipes[] = {{"photo", "coffee", 5, 1, 0},
                               {"landscape", "landscape", 1, 0, 0},
                               {"coffee", "coffee", 1, 0, 1},
                               {"chart", "chart", 1, 0, 2},
                               {"noisy", "landscape", 1, 9, 2}};

const Recipe& RecipeOf(std::string_view name) {
  for (const Recipe& recipe : kRecipes) {
    if (recipe.name == name) return recipe;
  }
  std::fprintf(stderr, "there is no scene '%.*s'\n", static_cast<int>(name.size()), name.data());
  std::exit(1);
}

rawfile::Picture Developed(const std::string& sample) {
  std::ifstream stream(DEIMG_SAMPLES "/" + sample + ".raw", std::ios::binary);
  const std::vector<std::uint8_t> file{std::istreambuf_iterator<char>(stream),
                                       std::istreambuf_iterator<char>()};
  rawfile::Picture picture;
  std::size_t position = 0;
  CallerStream input = MemoryInput(file, position);
  CallerStream output = NullOutput();
  output.cookie = &picture;
  output.Write = [](void* cookie, const void* line, std::uint32_t* count, std::uint32_t* error) {
    auto& p = *static_cast<rawfile::Picture*>(cookie);
    const auto* bytes = static_cast<const std::uint8_t*>(line);
    p.rgb.insert(p.rgb.end(), bytes, bytes + *count);
    p.width = *count / 3;
    ++p.height;
    *error = 0;
  };
  if (DEImg_DevelopM480(&input, DEIMG_JOB_FULL, DEIMG_FORMAT_8BIT, nullptr, &output) != 0) {
    std::fprintf(stderr, "the sample cannot be developed\n");
    std::exit(1);
  }
  return picture;
}

/// Noise of standard deviation 1, in units of 1/148: the sum of four random bytes.
int Noise(std::mt19937& random) {
  const auto r = static_cast<std::uint32_t>(random());
  return static_cast<int>((r & 255) + (r >> 8 & 255) + (r >> 16 & 255) + (r >> 24)) - 510;
}

/// One line of the scene; between the sample's pixels it is interpolated.
void FillLine(const Recipe& recipe, const rawfile::Picture& tile, std::uint32_t y,
              std::span<std::uint8_t> line) {
  const std::uint32_t zoom = recipe.zoom, lowerShare = y % zoom;
  const auto row = [&](std::uint32_t at) {
    return tile.rgb.data() + std::size_t{at % tile.height} * tile.width * 3;
  };
  const std::uint8_t* const upper = row(y / zoom);
  const std::uint8_t* const lower = row(y / zoom + 1);
  std::mt19937 random(y);
  for (std::uint32_t i = 0; i < line.size(); ++i) {
    const std::uint32_t x = i / 3, rightShare = x % zoom;
    const std::uint32_t left = x / zoom % tile.width * 3 + i % 3;
    const std::uint32_t right = (x / zoom + 1) % tile.width * 3 + i % 3;
    const auto between = [&](const std::uint8_t* samples) {
      return samples[left] * (zoom - rightShare) + samples[right] * rightShare;
    };
    const std::uint32_t value =
        (between(upper) * (zoom - lowerShare) + between(lower) * lowerShare) / (zoom * zoom);
    const int noise = recipe.noise == 0 ? 0 : recipe.noise * Noise(random) / 148;
    line[i] = static_cast<std::uint8_t>(std::clamp(static_cast<int>(value) + noise, 0, 255));
  }
}

}  // namespace

Scene MakeScene(std::string_view name, int width, int height) {
  const Recipe& recipe = RecipeOf(name);
  const rawfile::Picture tile = Developed(recipe.sample);
  rawfile::PictureSource source;
  source.width = static_cast<std::uint32_t>(width) - 2 * rawfile::kPictureBorder;
  source.height = static_cast<std::uint32_t>(height) - 2 * rawfile::kPictureBorder;
  source.readLine = [&](std::uint32_t y, std::span<std::uint8_t> line) {
    FillLine(recipe, tile, y, line);
  };
  rawfile::RawFile file;
  file.properties = rawfile::NaturalProperties();
  file.properties.decoder.codeSet = recipe.codeSet;
  SetPicture(source, file);
  Scene scene{static_cast<int>(file.plane.width), static_cast<int>(file.plane.height),
              Serialize(file), std::move(file.plane.samples)};
  std::fprintf(stderr, "%d x %d: %.2f coded bits a sample\n", scene.width, scene.height,
               8.0 * static_cast<double>(scene.file.size()) / scene.width / scene.height - 2);
  return scene;
}

const Scene& SceneOf(int width, int height) {
  static std::map<std::pair<int, int>, Scene> scenes;
  const auto [it, fresh] = scenes.try_emplace({width, height});
  if (fresh) it->second = MakeScene("landscape", width, height);
  return it->second;
}

CallerStream MemoryInput(const std::vector<std::uint8_t>& file, std::size_t& position) {
  thread_local Reader reader;
  reader = {&file, &position};
  CallerStream s{};
  s.cookie = &reader;
  s.Open = [](void* c, std::uint16_t, std::uint32_t* e) {
    *static_cast<Reader*>(c)->position = 0;
    *e = 0;
  };
  s.Close = [](void*, std::uint32_t* e) { *e = 0; };
  s.Read = [](void* c, void* buffer, std::uint32_t* count, std::uint32_t* e) {
    const Reader& r = *static_cast<Reader*>(c);
    *count = static_cast<std::uint32_t>(
        std::min<std::size_t>(*count, r.file->size() - std::min(*r.position, r.file->size())));
    std::memcpy(buffer, r.file->data() + *r.position, *count);
    *r.position += *count;
    *e = 0;
  };
  s.Seek = [](void* c, std::uint16_t origin, std::int32_t offset, std::uint32_t* e) {
    const Reader& r = *static_cast<Reader*>(c);
    const std::size_t base = origin == DEIMG_SEEK_END       ? r.file->size()
                             : origin == DEIMG_SEEK_CURRENT ? *r.position
                                                            : 0;
    *r.position = base + static_cast<std::size_t>(offset);
    *e = 0;
  };
  s.Tell = [](void* c, std::uint32_t* e) {
    *e = 0;
    return static_cast<std::uint32_t>(*static_cast<Reader*>(c)->position);
  };
  return s;
}

CallerStream NullOutput() {
  CallerStream s{};
  s.progressMode = DEIMG_PROGRESS_NEVER;
  s.Open = [](void*, std::uint16_t, std::uint32_t* e) { *e = 0; };
  s.Close = [](void*, std::uint32_t* e) { *e = 0; };
  s.Write = [](void*, const void*, std::uint32_t*, std::uint32_t* e) { *e = 0; };
  return s;
}

void Develop(const Scene& scene, std::uint32_t flags, std::uint32_t format, int processingSet) {
  std::size_t position = 0;
  CallerStream input = MemoryInput(scene.file, position);
  CallerStream output = NullOutput();
  DevelopParams params{};
  params.filled = 1;
  params.toneLevel = params.matrixLevel = params.colourLevel = params.wbPreset = DEIMG_AS_RECORDED;
  params.processingSet = static_cast<std::int16_t>(processingSet);
  const std::uint32_t result = DEImg_DevelopM480(&input, flags, format, &params, &output);
  if (result != DEIMG_OK) {
    std::fprintf(stderr, "developing failed with %u\n", result);
    std::exit(1);
  }
}

}  // namespace deimg::bench

#include "scene.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <span>
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

/// The developed sample: what the scene shows.
rawfile::Picture Landscape() {
  std::ifstream stream(DEIMG_SAMPLES "/landscape.raw", std::ios::binary);
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

Scene Make(int width, int height) {
  const rawfile::Picture tile = Landscape();
  rawfile::PictureSource source;
  source.width = static_cast<std::uint32_t>(width) - 2 * rawfile::kPictureBorder;
  source.height = static_cast<std::uint32_t>(height) - 2 * rawfile::kPictureBorder;
  source.readLine = [&](std::uint32_t y, std::span<std::uint8_t> line) {
    const std::uint8_t* const from =
        tile.rgb.data() + std::size_t{y % tile.height} * tile.width * 3;
    for (std::size_t x = 0; x < line.size(); x += 3 * tile.width) {
      std::memcpy(&line[x], from, std::min<std::size_t>(3 * tile.width, line.size() - x));
    }
  };
  rawfile::RawFile file;
  file.properties = rawfile::NaturalProperties();
  SetPicture(source, file);
  Scene scene{static_cast<int>(file.plane.width), static_cast<int>(file.plane.height),
              Serialize(file), std::move(file.plane.samples)};
  std::fprintf(stderr, "%d x %d: %.2f coded bits a sample\n", scene.width, scene.height,
               8.0 * static_cast<double>(scene.file.size()) / scene.width / scene.height - 2);
  return scene;
}

}  // namespace

const Scene& SceneOf(int width, int height) {
  static std::map<std::pair<int, int>, Scene> scenes;
  const auto [it, fresh] = scenes.try_emplace({width, height});
  if (fresh) it->second = Make(width, height);
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

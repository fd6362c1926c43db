/// What is developed: scenes made of the samples, in the sizes of interest.
#ifndef DEIMG_BENCH_SCENE_H
#define DEIMG_BENCH_SCENE_H

#include <cstdint>
#include <string_view>
#include <vector>

#include <deimg/deimg.h>

namespace deimg::bench {

struct Scene {
  int width = 0;  // of the sensor
  int height = 0;
  std::vector<std::uint8_t> file;     // the raw file
  std::vector<std::uint16_t> mosaic;  // its samples
};

/// Makes a scene of a sensor size that is a multiple of 16: "photo", "landscape", "coffee", "chart"
/// or "noisy"; ends the program for any other name. The same bytes everywhere.
Scene MakeScene(std::string_view name, int width, int height);

/// The landscape in this sensor size, made once.
const Scene& SceneOf(int width, int height);

/// The two sizes of interest.
inline const Scene& SixMegapixels() { return SceneOf(3072, 2048); }
inline const Scene& HundredMegapixels() { return SceneOf(12288, 8192); }

/// Develops a file from memory, throwing the lines away; ends the program on a failure.
void Develop(const Scene& scene, std::uint32_t flags, std::uint32_t format, int processingSet);

/// A stream that reads from memory, and one that throws everything away.
CallerStream MemoryInput(const std::vector<std::uint8_t>& file, std::size_t& position);
CallerStream NullOutput();

}  // namespace deimg::bench

#endif  // DEIMG_BENCH_SCENE_H

#include "rawfile/picture.h"

#include <algorithm>
#include <array>

#include "rawfile/bytes.h"

namespace deimg::rawfile {
namespace {

using Colour = std::array<uint8_t, 3>;

Colour Grey(int64_t value) {
  const auto level = static_cast<uint8_t>(std::clamp<int64_t>(value, 0, 255));
  return {level, level, level};
}

/// A triangle wave between 0 and 255 with the given period, 0 at 0.
int64_t Wave(int64_t x, int64_t period) {
  const int64_t phase = (x % period) * 510 / period;
  return phase <= 255 ? phase : 510 - phase;
}

Colour ChartPixel(int64_t x, int64_t y, int64_t width, int64_t height) {
  constexpr Colour kPatches[] = {{115, 82, 69},   {204, 161, 141}, {101, 134, 179}, {89, 109, 61},
                                 {141, 137, 194}, {132, 228, 208}, {226, 118, 45},  {80, 91, 182},
                                 {222, 91, 125},  {91, 63, 123},   {173, 232, 91},  {240, 164, 40},
                                 {44, 56, 142},   {74, 148, 81},   {179, 42, 50},   {250, 226, 21},
                                 {191, 81, 160},  {6, 142, 172}};
  constexpr int64_t kPatchRow = 9;
  constexpr int kPeriods[] = {3, 4, 5, 6, 8, 10, 12, 16};
  const int64_t band = y * 8 / height;
  switch (band) {
    case 0:
      return Grey(x * 256 / width);
    case 1:
      return Grey(x * 16 / width * 17);
    case 2:
    case 3:
      return kPatches[(band - 2) * kPatchRow + x * kPatchRow / width];
    case 4: {  // upright and level bars, finest first
      const int64_t period = kPeriods[x * 8 / width];
      const bool upright = y * 16 / height % 2 == 0;
      return Grey((upright ? x : y) % period * 2 < period ? 40 : 215);
    }
    default: {  // rings that get finer outwards
      const int64_t dx = x - width / 2, dy = y - height * 13 / 16;
      return Grey(20 + Wave(dx * dx + dy * dy, 3 * width) * 215 / 255);
    }
  }
}

Colour GradientPixel(int64_t x, int64_t y, int64_t width, int64_t height) {
  return {static_cast<uint8_t>(30 + x * 195 / width),
          static_cast<uint8_t>(40 + (x + y) * 175 / (width + height)),
          static_cast<uint8_t>(30 + y * 195 / height)};
}

/// A fixed pseudo-random value from 0 to 255 for a point.
int64_t Hash(uint32_t x, uint32_t y) {
  uint32_t h = x * 0x9E3779B1u ^ y * 0x85EBCA77u;
  h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
  h = (h ^ (h >> 12)) * 0x297A2D39u;
  return (h ^ (h >> 15)) >> 24;
}

/// Random values on a grid of 2^shift pixels, interpolated in between.
int64_t Noise(int64_t x, int64_t y, uint32_t shift) {
  const int64_t size = int64_t{1} << shift;
  const auto gx = static_cast<uint32_t>(x >> shift), gy = static_cast<uint32_t>(y >> shift);
  const int64_t fx = x & (size - 1), fy = y & (size - 1);
  const int64_t top = Hash(gx, gy) * (size - fx) + Hash(gx + 1, gy) * fx;
  const int64_t bottom = Hash(gx, gy + 1) * (size - fx) + Hash(gx + 1, gy + 1) * fx;
  return (top * (size - fy) + bottom * fy) / (size * size);
}

Colour TexturePixel(int64_t x, int64_t y, int64_t width, int64_t height) {
  const int64_t detail =
      Noise(x, y, 7) * 6 + Noise(x, y, 5) * 4 + Noise(x, y, 3) * 3 + Noise(x, y, 1) * 2 - 15 * 128;
  Colour colour = GradientPixel(x, y, width, height);
  for (uint8_t& value : colour) {
    value = static_cast<uint8_t>(std::clamp<int64_t>(value + detail / 12, 0, 255));
  }
  return colour;
}

}  // namespace

PictureSource SourceOf(const Picture& picture) {
  const auto readLine = [&picture](uint32_t y, std::span<uint8_t> line) {
    std::copy_n(picture.rgb.begin() + static_cast<std::ptrdiff_t>(line.size() * y), line.size(),
                line.begin());
  };
  return {picture.width, picture.height, readLine};
}

PictureSource MakeScene(const std::string& name, uint32_t width, uint32_t height) {
  Colour (*pixel)(int64_t, int64_t, int64_t, int64_t) = nullptr;
  if (name == "chart") pixel = ChartPixel;
  if (name == "gradient") pixel = GradientPixel;
  if (name == "texture") pixel = TexturePixel;
  if (pixel == nullptr) throw WriteError("no scene is called '" + name + "'");
  const auto readLine = [=](uint32_t y, std::span<uint8_t> line) {
    for (uint32_t x = 0; x < width; ++x) {
      const Colour colour = pixel(x, y, width, height);
      std::copy(colour.begin(), colour.end(), line.begin() + 3 * static_cast<std::ptrdiff_t>(x));
    }
  };
  return {width, height, readLine};
}

}  // namespace deimg::rawfile

// The raw-file writer: its bytes, what it refuses, and that pictures come back out of its files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "rawfile/mosaic.h"
#include "rawfile/natural_tuning.h"
#include "support/streams.h"

namespace deimg::testing {
namespace {

using rawfile::Bytes;
using rawfile::EncodeSensorData;
using rawfile::PictureFile;
using rawfile::Plane;
using rawfile::RawFile;
using rawfile::WriteError;

/// The developed picture as one run of bytes; empty after a failure.
std::vector<uint8_t> Developed(const RawFile& file) {
  std::vector<uint8_t> pixels;
  for (const auto& line : Develop(rawfile::Serialize(file), DEIMG_JOB_FULL, 4).lines) {
    pixels.insert(pixels.end(), line.begin(), line.end());
  }
  return pixels;
}

std::vector<uint8_t> PixelsOf(const rawfile::PictureSource& picture) {
  std::vector<uint8_t> pixels(size_t{3} * picture.width * picture.height);
  const size_t stride = size_t{3} * picture.width;
  for (uint32_t y = 0; y < picture.height; ++y) {
    picture.readLine(y, std::span(pixels).subspan(stride * y, stride));
  }
  return pixels;
}

TEST(RawFileWriter, CodedBytesAreTheFormats) {
  // Set 0 has 11110 for a first value of 0 and 111111011 for the end of a block.
  const Plane grey{8, 8, std::vector<uint16_t>(64, 2048)};
  Bytes data = EncodeSensorData(grey, {0, 1, 2}, {.filler = 0x55, .minimumCodedSize = 8});
  EXPECT_EQ(data, (Bytes{0,    0,    0,    0,    0,    0,    0,    0,
                         0,    0,    0,    0,    0,    0,    0,    0,  // low bits
                         0x55, 0x55, 0x55, 0xF7, 0xEC, 0x55, 0x55, 0x55}));
  EXPECT_EQ(EncodeSensorData(grey, {}).size(), 16u + 65536u);
}

TEST(RawFileWriter, RefusesWhatTheCodeCannotHold) {
  Plane jump{8, 8, std::vector<uint16_t>(64, 2048)};
  jump.samples[20] = 2048 + 4 * 1023 + 3;  // eleven bits are the first too many
  EXPECT_NO_THROW(EncodeSensorData(jump, {}));
  for (const uint16_t high : {uint16_t{2048 + 4 * 1024}, uint16_t{65535}}) {
    jump.samples[20] = high;
    EXPECT_THROW(EncodeSensorData(jump, {}), WriteError);
  }
  EXPECT_THROW(EncodeSensorData({2, 2, {0, 0, 0, 1}}, {}), WriteError);  // behind the last block
  EXPECT_THROW(EncodeSensorData({7, 64, std::vector<uint16_t>(448)}, {}), WriteError);
  EXPECT_THROW(EncodeSensorData({8, 8, std::vector<uint16_t>(64)}, {0, 65535, 1}), WriteError);
}

TEST(Pictures, GreyRampIsNeutralAndRising) {
  constexpr uint32_t kStep = 8;
  const auto ramp = [](uint32_t, std::span<uint8_t> line) {
    for (size_t i = 0; i < line.size(); ++i) line[i] = static_cast<uint8_t>(i / 3 / kStep);
  };
  const std::vector<uint8_t> pixels = Developed(PictureFile({256 * kStep, 16, ramp}));
  ASSERT_EQ(pixels.size(), 256u * kStep * 16 * 3);
  for (int level = 0; level < 256; ++level) {
    const size_t column = static_cast<size_t>(level) * kStep + kStep / 2;
    const uint8_t* pixel = &pixels[3 * (8 * 256 * kStep + column)];
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(pixel[i], level, 1);
  }
}

TEST(Pictures, ComeBack) {
  for (const auto& [scene, meanDifference] : {std::pair{"gradient", 0.5}, {"texture", 3.0}}) {
    const rawfile::PictureSource picture = rawfile::MakeScene(scene, 320, 240);
    const std::vector<uint8_t> wanted = PixelsOf(picture);
    const std::vector<uint8_t> got = Developed(PictureFile(picture));
    ASSERT_EQ(got.size(), wanted.size());
    double sum = 0;
    for (size_t i = 0; i < got.size(); ++i) sum += std::abs(got[i] - wanted[i]);
    EXPECT_LT(sum / static_cast<double>(got.size()), meanDifference) << scene;
  }
}

}  // namespace
}  // namespace deimg::testing

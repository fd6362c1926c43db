// The raw-file writer against the library that reads its files: what was put in comes out again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "decode/sensor_plane_decoder.h"
#include "pipeline/levels.h"
#include "rawfile/mosaic.h"
#include "rawfile/natural_tuning.h"
#include "rawfile/random_camera.h"
#include "storage/memory_stream.h"
#include "support/streams.h"

namespace deimg::testing {
namespace {

using rawfile::ByteOrder;
using rawfile::Bytes;
using rawfile::EncodeSensorData;
using rawfile::PictureFile;
using rawfile::Plane;
using rawfile::RawFile;
using rawfile::WriteError;

/// What the library's reader and decoder make of a file.
struct ReadBack {
  Result result = 0;
  ImageProps props{};
  std::vector<uint16_t> samples;
};

ReadBack Read(const RawFile& file) {
  ReadBack back;
  InputStream input(rawfile::Serialize(file));
  std::uint32_t error = 0;
  input.get()->Open(input.get()->cookie, DEIMG_OPEN_READ, &error);
  ImagePropsBlock block;
  back.result = ReadImagePropsBlock(*input.get(), block);
  if (back.result == 0) back.result = pxfPsReadOpenImageProps(block, back.props);
  if (back.result != 0) return back;
  const ImageGeometry geometry = DeriveGeometry(back.props.sensor);
  MemoryStream plane = MemoryStream::Make(PlaneBytes(geometry));
  back.result = SensorPlaneDecoder(ChosenLevel().planeLines(), *input.get(), geometry, back.props,
                                   *plane.get());
  for (size_t i = 0; i < file.plane.samples.size(); ++i) {
    back.samples.push_back(
        static_cast<uint16_t>(plane.memory()[2 * i] | plane.memory()[2 * i + 1] << 8));
  }
  return back;
}

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

TEST(RandomCameras, ReadBackAsWritten) {
  int big = 0, sets[3] = {};
  for (uint64_t seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    const RawFile file = rawfile::RandomCamera(seed);
    const rawfile::PropertySet& p = file.properties;
    const ReadBack back = Read(file);
    ASSERT_EQ(back.result, 0u);
    EXPECT_TRUE(back.samples == file.plane.samples);
    EXPECT_EQ(int16_t(back.props.sensitivity()), p.sensitivity);
    EXPECT_EQ(back.props.recordedPreset(), p.wbPreset);
    EXPECT_EQ(back.props.recordedToneLevel(), p.toneLevel);
    EXPECT_EQ(back.props.recordedColourLevel(), p.colourLevel);
    EXPECT_EQ(back.props.sensor.areaRight, p.sensor.area.right);
    EXPECT_EQ(back.props.blackLevelWords[3], p.blackLevels[3]);
    EXPECT_EQ(back.props.colourTemperatures[7], p.colourTemperatures[7]);
    big += file.order == ByteOrder::kBig;
    ++sets[std::min(p.decoder.codeSet, 2u)];
  }
  EXPECT_GT(std::min({big, sets[0], sets[1], sets[2]}), 20);
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

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
using rawfile::Plane;
using rawfile::WriteError;

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

TEST(Pictures, ComeBack) {
  for (const auto& [scene, meanDifference] : {std::pair{"gradient", 0.5}, {"texture", 3.0}}) {
    const rawfile::PictureSource picture = rawfile::MakeScene(scene, 320, 240);
    const auto lines = Develop(Serialize(rawfile::PictureFile(picture)), 0, 4).lines;
    ASSERT_EQ(lines.size(), 240u);
    double sum = 0;
    for (uint32_t y = 0; y < 240; ++y) {
      Bytes wanted(3 * 320);
      picture.readLine(y, wanted);
      for (size_t i = 0; i < wanted.size(); ++i) sum += std::abs(lines[y][i] - wanted[i]);
    }
    EXPECT_LT(sum / (3 * 320 * 240), meanDifference) << scene;
  }
}

}  // namespace
}  // namespace deimg::testing

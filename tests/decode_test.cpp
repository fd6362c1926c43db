// The bit stream, the sensor plane decoder, black levels, point white balance, preview reduction.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "base/byte_order.h"
#include "decode/black_level_subtraction.h"
#include "decode/coded_data_reader.h"
#include "decode/point_white_balance.h"
#include "decode/preview_reduction.h"
#include "decode/sensor_plane_decoder.h"
#include "fuzz/plain_decoder.h"
#include "props/image_geometry.h"
#include "rawfile/sensor_encoder.h"
#include "storage/memory_stream.h"
#include "support/fault_heap.h"
#include "support/level_choice.h"
#include "support/streams.h"

namespace deimg {
namespace {

using testing::InputStream;
using Bytes = std::vector<std::uint8_t>;

ImageGeometry GeometryOf(int width, int height) {
  SensorRecord sensor{};
  sensor.width = static_cast<std::uint16_t>(width);
  sensor.height = static_cast<std::uint16_t>(height);
  sensor.areaRight = static_cast<std::uint16_t>(width - 1);
  sensor.areaBottom = static_cast<std::uint16_t>(height - 1);
  return DeriveGeometry(sensor);
}

/// Against the code read bit by bit: whole and damaged data, cut short, across the end of the first
/// buffer, in portions of any size.
TEST(SensorPlaneDecoder, AgreesWithTheCodeReadBitByBit) {
  constexpr std::uint32_t kBuffer = CodedDataReader::kBufferBytes;
  std::mt19937 random(1);
  const auto draw = [&](std::uint32_t low, std::uint32_t high) {
    return low + static_cast<std::uint32_t>(random() % (high - low + 1));
  };
  int fitting = 0, damaged = 0;
  for (int round = 0; round < 1200; ++round) {
    const std::uint32_t width = 8 + 2 * draw(0, 40), height = draw(1, 40), set = draw(0, 3);
    // Levels that change now and then, by little or much: every run and size of difference.
    const std::uint32_t seldom = draw(1, 20), largest = draw(0, 10);
    int levels[2] = {512, 512};
    rawfile::Plane plane{width, height, std::vector<std::uint16_t>(width * height)};
    for (std::size_t i = 0; i < plane.samples.size() / 64 * 64; ++i) {
      int& level = levels[i % 2];
      if (draw(1, seldom) == 1) {
        const int by = static_cast<int>(draw(0, 1u << draw(0, largest)));
        level = std::clamp(draw(0, 1) == 0 ? level + by : level - by, 0, 1023);
      }
      plane.samples[i] = static_cast<std::uint16_t>(4 * level + (0x1B >> 2 * (i % 4) & 3));
    }
    const std::uint32_t lowBits = width * height / 4;
    const auto stuffing = static_cast<std::uint8_t>(random());
    Bytes coded = EncodeSensorData(
        plane, {set, 0, 0},
        {.stuffing = stuffing, .runsToLastEntry = round % 2 == 0, .minimumCodedSize = 1});
    coded.erase(coded.begin(), coded.begin() + static_cast<std::ptrdiff_t>(lowBits));
    const Bytes whole = coded;
    if (round % 3 == 0) coded.resize(draw(0, static_cast<std::uint32_t>(coded.size())));
    for (std::uint32_t n = round % 4 == 0 ? draw(1, 5) : 0; n > 0 && !coded.empty(); --n) {
      coded[random() % coded.size()] = static_cast<std::uint8_t>(random());
    }

    // The coded bytes begin `inFirst` bytes in front of the end of the first buffer.
    const auto inFirst = std::min(draw(1, 300), static_cast<std::uint32_t>(coded.size()));
    Bytes file(26 + lowBits + kBuffer - inFirst, 0x1B);
    file.insert(file.end(), coded.begin(), coded.end());
    InputStream input(file);
    const std::uint32_t portion = round % 2 == 0 ? UINT32_MAX : draw(1, 100);
    input.cut = [&](int n, std::uint32_t wanted) {
      return n < 3 ? wanted : std::min(wanted, portion);
    };
    ImageProps props{};
    props.decoder[0] = set;
    props.decoder[1] = draw(0, kBuffer - inFirst);
    props.decoder[2] = kBuffer - inFirst - props.decoder[1];
    // In memory the black levels are subtracted as well.
    const bool inMemory = round % 5 < 3;
    for (std::uint16_t& level : props.blackLevelWords) {
      level = static_cast<std::uint16_t>(draw(0, 1) * draw(0, 4096));
    }
    const MemoryStream stream = MemoryStream::Make(2 * plane.samples.size());
    const Result result =
        SensorPlaneDecoder(ChosenLevel().planeLines(), *input.get(),
                           GeometryOf(static_cast<int>(width), static_cast<int>(height)), props,
                           {*stream.get(), inMemory ? stream.samples() : nullptr});
    EXPECT_FALSE(input.isOpen());
    std::vector<std::uint16_t> expected;
    const bool fits =
        inFirst > 0 && fuzz::PlainDecode(coded, 0x1B, set, width, width * height, expected);
    ASSERT_EQ(result, fits ? DEIMG_OK : DEIMG_BAD_DATA) << round;
    (fits ? fitting : damaged) += 1;
    if (coded == whole) {
      ASSERT_TRUE(fits && expected == plane.samples) << round;
    }
    for (std::size_t i = 0; fits && i < expected.size(); ++i) {
      const std::size_t position = i / width % 2 * 2 + (i % width % 2 == 0 ? 1 : 0);
      const int black = inMemory ? props.blackLevelWords[position] : 0;
      ASSERT_EQ(stream.memory()[2 * i] | stream.memory()[2 * i + 1] << 8,
                std::max(expected[i] - black, 0))
          << "round " << round << " sample " << i;
    }
  }
  EXPECT_GT(std::min(fitting, damaged), 300);
}

TEST(Geometry, IsSupportedInsideThePlane) {
  // Width, height, left, right, top, bottom.
  const auto supported = [](const std::array<int, 6>& values) {
    SensorRecord s{};
    std::uint16_t* const fields[] = {&s.width,     &s.height,  &s.areaLeft,
                                     &s.areaRight, &s.areaTop, &s.areaBottom};
    for (std::size_t i = 0; i < 6; ++i) *fields[i] = static_cast<std::uint16_t>(values[i]);
    return IsSupported(DeriveGeometry(s));
  };
  for (const auto& good :
       {std::array{8, 2, 0, 7, 0, 1}, {6, 1, 0, 5, 0, 0}, {32768, 32767, 0, 7, 0, 1}}) {
    EXPECT_TRUE(supported(good)) << good[0];
  }
  for (const auto& bad : {std::array{9, 2, 0, 7, 0, 1},
                          {4, 1, 0, 3, 0, 0},
                          {6, 0, 0, 5, 0, 0},
                          {8, 2, 0, 8, 0, 1},
                          {8, 2, 5, 4, 0, 1},
                          {8, 2, 7, 2, 0, 1},
                          {8, 2, 0, 7, 0, 2},
                          {8, 2, 0, 7, 2, 1},
                          {32768, 32768, 0, 7, 0, 1}}) {
    EXPECT_FALSE(supported(bad)) << bad[0] << ' ' << bad[3] << ' ' << bad[5];
  }
}

class PlaneLoops : public testing::LevelTest {};
DEIMG_INSTANTIATE_LEVELS(PlaneLoops);

/// The reduction of one position as a formula over the whole plane, stage by stage.
TEST_P(PlaneLoops, PreviewsAgreeWithThePlainFormula) {
  std::mt19937 random(3);
  for (const auto& size : {std::pair{48, 12}, {50, 13}, {52, 14}, {54, 15}, {60, 47}, {100, 205}}) {
    const int width = size.first, height = size.second;
    const ImageGeometry g = GeometryOf(width, height);
    const ImageGeometry r = ReduceGeometry(g);
    std::vector<int> plane(static_cast<std::size_t>(width * height));
    const MemoryStream stream = MemoryStream::Make(2 * plane.size());
    for (std::size_t i = 0; i < plane.size(); ++i) {
      plane[i] = static_cast<int>(random() % 65536);
      stream.memory()[2 * i] = static_cast<std::uint8_t>(plane[i]);
      stream.memory()[2 * i + 1] = static_cast<std::uint8_t>(plane[i] >> 8);
    }
    const int rw = r.sensorWidth, rh = r.sensorHeight, wq = width / 6, hq = height / 6;
    std::vector<std::vector<int>> positions(4,
                                            std::vector<int>(static_cast<std::size_t>(rw * rh), 0));
    const int phase[4][2] = {{0, 1}, {0, 0}, {1, 1}, {1, 0}};
    for (std::size_t p = 0; p < 4; ++p) {
      const int lo = phase[p][0], co = phase[p][1];
      const auto sample = [&](int k, int j, int row, int column) {
        int y = 6 * k + lo + 2 * row;
        if (y >= height) y -= 6;  // the group before left its last line there
        int x = co + 6 * j + 2 * column;
        while (x >= width) x -= 2;
        return plane[static_cast<std::size_t>(y * width + x)];
      };
      const auto enlarged = [&](int k, int j, int a, int b) {
        const int w[4][4] = {{4, 0, 0, 0}, {1, 3, 0, 0}, {0, 2, 2, 0}, {0, 0, 3, 1}};
        int sum = 0;
        for (int i = 0; i < 16; ++i) sum += w[a][i / 4] * w[b][i % 4] * sample(k, j, i / 4, i % 4);
        return sum >> 4;
      };
      const auto temporary = [&](int row, int column) {
        const int k = row / 2, j = column / 2, a = row % 2 * 2, b = column % 2 * 2;
        return (enlarged(k, j, a, b) + enlarged(k, j, a, b + 1) + enlarged(k, j, a + 1, b) +
                enlarged(k, j, a + 1, b + 1)) >>
               2;
      };
      const int weight[4] = {1, 3, 3, 1};
      for (int y = 0; y < hq - 1; ++y) {
        for (int x = 0; x < wq - 1; ++x) {
          int sum = 0;
          if (y == 0) {
            for (int i = 0; i < 4; ++i) sum += temporary(i / 2, 2 * x + i % 2);
            sum >>= 2;
          } else if (x == 0) {
            for (int i = 0; i < 8; ++i) sum += weight[i / 2] * temporary(2 * y - 1 + i / 2, i % 2);
            sum >>= 4;
          } else {
            for (int i = 0; i < 16; ++i) {
              sum +=
                  weight[i / 4] * weight[i % 4] * temporary(2 * y - 1 + i / 4, 2 * x - 1 + i % 4);
            }
            sum >>= 6;
          }
          positions[p][static_cast<std::size_t>(y * rw + x)] = sum;
        }
      }
    }
    std::vector<std::uint16_t> planes(static_cast<std::size_t>(4 * rw * rh));
    std::uint16_t* samples = nullptr;
    const auto reduce = [&] {
      planes.assign(planes.size(), 0);
      return PreviewReduction(level.planeLines(), {*stream.get(), samples}, g, r, planes.data());
    };
    ASSERT_EQ(reduce(), DEIMG_OK);
    const auto together = planes;
    samples = stream.samples();  // without copies
    ASSERT_EQ(reduce(), DEIMG_OK);
    ASSERT_EQ(planes, together);
    ToLittleEndian(planes.data(), planes.size());  // and back, which is the same
    {
      // Short of memory for all positions side by side.
      const testing::FaultScope faults({.largest = static_cast<std::size_t>(32 * width)});
      ASSERT_EQ(reduce(), DEIMG_OK);
      ASSERT_EQ(planes, together);
      ToLittleEndian(planes.data(), planes.size());
    }
    for (int y = 0; y < rh; ++y) {
      for (int x = 0; x < rw; ++x) {
        const std::size_t p = static_cast<std::size_t>(y % 2 * 2 + (x % 2 == 0 ? 1 : 0));
        int sum = 0;
        for (int i = 0; i < 4; ++i) {
          sum +=
              positions[p][static_cast<std::size_t>((y / 2 * 2 + i / 2) * rw + x / 2 * 2 + i % 2)];
        }
        ASSERT_EQ(planes[static_cast<std::size_t>(y * rw + x)], sum >> 2)
            << width << 'x' << height << " at " << x << ',' << y;
      }
    }
  }
}

/// Every reader of the plane refuses one that ends too early.
TEST(ShortPlane, IsAnErrorForEveryReader) {
  const ImageGeometry g = GeometryOf(48, 36);
  const ReducedGeometry r = ReduceGeometry(g);
  const PlaneLines& lines = BestLevel("").planeLines();
  const std::uint16_t black[4] = {};
  std::vector<std::uint16_t> planes(4u * r.sensorWidth * r.sensorHeight);
  for (const std::uint64_t missing : {0u, 2u, 96u, 1000u}) {
    const MemoryStream stream = MemoryStream::Make(PlaneBytes(g) - missing);
    const Result expected = missing == 0 ? DEIMG_OK : DEIMG_FILE_READ;
    EXPECT_EQ(BlackLevelSubtraction(lines, g, *stream.get(), black), expected);
    EXPECT_EQ(PreviewReduction(lines, {*stream.get()}, g, r, planes.data()), expected);
    DevelopParams params{};
    for (const int y : {10, 16, 30}) {  // the square reaches the last line, or beyond it
      params.wbPointY = y;
      const bool reads = missing >= 1000 || (missing != 0 && y >= 16);
      EXPECT_EQ(PointWhiteBalance(*stream.get(), g, params), reads ? expected : Result{DEIMG_OK});
    }
  }
}

}  // namespace
}  // namespace deimg

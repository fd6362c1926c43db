// The bit stream, the sensor plane decoder, black levels, point white balance, preview reduction.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>

#include "base/byte_order.h"
#include "decode/black_level_subtraction.h"
#include "decode/code_sets.h"
#include "decode/coded_data_reader.h"
#include "decode/point_white_balance.h"
#include "decode/preview_reduction.h"
#include "decode/sensor_plane_decoder.h"
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

/// Collects bits, most significant first; a 0xFF byte gets a stuffed one behind it.
class BitWriter {
 public:
  explicit BitWriter(std::uint8_t stuffing = 0) : stuffing_(stuffing) {}
  BitWriter& Put(const char* bits) {
    for (; *bits != '\0'; ++bits) {
      if (*bits == ' ') continue;
      current_ = static_cast<std::uint8_t>(current_ << 1 | (*bits - '0'));
      if (++used_ < 8) continue;
      bytes_.push_back(current_);
      if (current_ == 0xFF) bytes_.push_back(stuffing_);
      used_ = 0;
    }
    return *this;
  }
  /// Fills the last byte with ones and the rest of `size` bytes with zeros.
  Bytes Padded(std::size_t size) {
    while (used_ != 0) Put("1");
    bytes_.resize(std::max(size, bytes_.size()));
    return bytes_;
  }
  std::size_t size() const { return bytes_.size(); }

 private:
  std::uint8_t stuffing_;
  Bytes bytes_;
  std::uint8_t current_ = 0;
  int used_ = 0;
};

constexpr std::size_t kBuffer = CodedDataReader::kBufferBytes;

struct DecodedBlock {
  Result result;
  DifferenceBlock block;
};

DecodedBlock DecodeOne(const Bytes& bytes, std::uint64_t skip = 0) {
  InputStream input(bytes);
  CodedDataReader reader(*input.get(), ChooseCodeSet(0));
  EXPECT_TRUE(reader.AllocateBuffer());
  DecodedBlock decoded{};
  decoded.result = reader.Begin(skip);
  if (decoded.result == DEIMG_OK) decoded.result = reader.DecodeBlock(decoded.block);
  return decoded;
}

TEST(CodeSets, AreCompletePrefixCodes) {
  for (std::uint32_t set = 0; set < 3; ++set) {
    const CodeSet& codes = ChooseCodeSet(set);
    EXPECT_EQ(std::accumulate(codes.runSize.counts.begin(), codes.runSize.counts.end(), 0), 162);
    auto symbols = codes.runSize.symbols;
    std::sort(symbols.begin(), symbols.end());
    EXPECT_EQ(std::unique(symbols.begin(), symbols.end()), symbols.end());
    const RunSizeTree tree(codes.runSize);
    const auto leaves =
        std::count_if(tree.nodes.begin(), tree.nodes.end(),
                      [](const CodeTreeNode& n) { return n.value != CodeTreeNode::kInner; });
    EXPECT_EQ(leaves, 162);
  }
  EXPECT_EQ(&ChooseCodeSet(7), &ChooseCodeSet(2));
}

TEST(CodedDataReader, ExtendsDifferences) {
  // First value of size 3 (code 010): 011 is -4, 111 is 7; size 1 (1101): +1, -1; size 0: 0.
  const std::map<const char*, int> cases = {{"010 011", -4},
                                            {"010 111", 7},
                                            {"1101 1", 1},
                                            {"1101 0", -1},
                                            {"11110", 0},
                                            {"010 000", -7},
                                            {"010 100", 4},
                                            {"1111110 1 1111111111", 2047},
                                            {"1111110 0 0000000000", -2047}};
  for (const auto& [bits, value] : cases) {
    const DecodedBlock d = DecodeOne(BitWriter().Put(bits).Put("11001").Padded(kBuffer));
    EXPECT_EQ(d.block[0], value) << bits;
  }
}

TEST(CodedDataReader, RunsAndEnds) {
  // Symbol F0 skips 16 positions without a value; three of them and fifteen sizes reach entry 63.
  const CodeSet& codes = ChooseCodeSet(0);
  std::map<int, std::string> code;
  std::uint32_t next = 0;
  std::size_t i = 0;
  for (int length = 1; length <= 16; ++length, next <<= 1) {
    for (int k = 0; k < codes.runSize.counts[static_cast<std::size_t>(length - 1)]; ++k, ++next) {
      std::string bits;
      for (int b = length - 1; b >= 0; --b) bits += (next >> b & 1) != 0 ? '1' : '0';
      code[codes.runSize.symbols[i++]] = bits;
    }
  }
  EXPECT_EQ(code[0xC2], "1111111111111000");
  EXPECT_EQ(code[0xE3], "1111111111111010");
  const std::string skip16 = code[0xF0];
  const std::string one = code[0x01] + "1";

  const auto decode = [](const std::string& bits) {
    return DecodeOne(BitWriter().Put("11110").Put(bits.c_str()).Padded(kBuffer));
  };
  DecodedBlock d = decode(one + code[0x12] + "10" + code[0x00] + "0000");
  EXPECT_EQ(d.result, DEIMG_OK);
  EXPECT_EQ(d.block[1], 1);
  EXPECT_EQ(d.block[2], 0);
  EXPECT_EQ(d.block[3], 2);

  std::string fifteen;
  for (int k = 0; k < 15; ++k) fifteen += one;
  d = decode(skip16 + skip16 + skip16 + fifteen);  // ends at entry 63 without an end symbol
  EXPECT_EQ(d.result, DEIMG_OK);
  EXPECT_EQ(d.block[63], 1);
  EXPECT_EQ(decode(skip16 + skip16 + skip16 + skip16).result, DEIMG_BAD_DATA);
  EXPECT_EQ(decode("1111111111111111").result, DEIMG_BAD_DATA);  // no such code
  EXPECT_EQ(DecodeOne(Bytes(kBuffer, 0xFE)).result, DEIMG_BAD_DATA);
}

TEST(CodedDataReader, StuffedBytesAtBufferEdges) {
  const CodeSet& codes = ChooseCodeSet(0);
  std::mt19937 random(5);
  rawfile::Plane plane{64, 4096, {}};
  plane.samples.resize(64 * 4096);
  for (auto& s : plane.samples) s = static_cast<std::uint16_t>(random() % 4096);
  for (const int stuffing : {0x00, 0x12, 0xFF}) {
    const Bytes file =
        EncodeSensorData(plane, {0, 0, 0}, {.stuffing = static_cast<std::uint8_t>(stuffing)});
    const Bytes coded(file.begin() + 64 * 4096 / 4, file.end());
    ASSERT_GT(coded.size(), 2 * kBuffer);
    std::vector<DifferenceBlock> reference;
    for (const std::uint32_t readAtMost : {UINT32_MAX, 1u, 2u, 3u, 1000u, 65535u}) {
      InputStream input(coded);
      CodedDataReader reader(*input.get(), codes);
      ASSERT_TRUE(reader.AllocateBuffer());
      ASSERT_EQ(reader.Begin(0), DEIMG_OK);
      input.readAtMost = readAtMost;  // short reads from the first refill on
      std::vector<DifferenceBlock> blocks(4096);
      for (auto& block : blocks) {
        block = {};
        ASSERT_EQ(reader.DecodeBlock(block), DEIMG_OK) << readAtMost;
      }
      if (reference.empty()) reference = blocks;
      EXPECT_EQ(blocks, reference) << readAtMost;
    }
  }
}

TEST(CodedDataReader, StartAndEndOfInput) {
  const Bytes zeros(kBuffer, 0);
  EXPECT_EQ(DecodeOne(Bytes(kBuffer - 1, 0)).result, DEIMG_BAD_DATA);
  EXPECT_EQ(DecodeOne(zeros, kBuffer).result, DEIMG_BAD_DATA);
  EXPECT_EQ(DecodeOne(zeros, UINT64_C(0x1FFFFFFFE)).result, DEIMG_BAD_DATA);
  // A block whose last bit is the input's last is complete; one that needs another bit is not.
  Bytes last = zeros;
  const Bytes block = BitWriter().Put("11110 11001 11001 111111011").Padded(0);
  std::copy(block.begin(), block.end(), last.end() - static_cast<int>(block.size()));
  EXPECT_EQ(DecodeOne(last, kBuffer - block.size()).result, DEIMG_OK);
  EXPECT_EQ(DecodeOne(last, kBuffer - block.size() + 1).result, DEIMG_BAD_DATA);
}

ImageGeometry GeometryOf(int width, int height) {
  SensorRecord sensor{};
  sensor.width = static_cast<std::uint16_t>(width);
  sensor.height = static_cast<std::uint16_t>(height);
  sensor.areaRight = static_cast<std::uint16_t>(width - 1);
  sensor.areaBottom = static_cast<std::uint16_t>(height - 1);
  return DeriveGeometry(sensor);
}

/// Decodes a plane that the writer encoded.
TEST(SensorPlaneDecoder, GivesThePlaneBack) {
  std::mt19937 random(1);
  const std::pair<int, int> sizes[] = {{8, 8}, {80, 80}, {80, 81}, {16, 20}, {10, 33}, {130, 200}};
  for (const auto& [width, height] : sizes) {
    for (std::uint32_t set : {0u, 1u, 7u}) {
      rawfile::Plane plane{
          static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}};
      const auto samples = static_cast<std::size_t>(width * height);
      plane.samples.resize(samples);
      for (std::size_t i = 0; i < samples / 64 * 64; ++i) {
        plane.samples[i] = static_cast<std::uint16_t>(i % 97 < 60 ? 2048 : random() % 4096);
      }
      ImageProps props{};
      props.decoder[0] = set;
      props.decoder[1] = 3;
      props.decoder[2] = set * 100;
      Bytes file(26, 0);
      const Bytes data = EncodeSensorData(plane, {set, 3, set * 100});
      file.insert(file.end(), data.begin(), data.end());
      InputStream input(file);
      const MemoryStream stream = MemoryStream::Make(2 * samples);
      ASSERT_EQ(SensorPlaneDecoder(ChosenLevel().planeLines(), *input.get(),
                                   GeometryOf(width, height), props, *stream.get()),
                DEIMG_OK);
      EXPECT_FALSE(input.isOpen());
      for (std::size_t i = 0; i < samples; ++i) {
        ASSERT_EQ(stream.memory()[2 * i] | stream.memory()[2 * i + 1] << 8, plane.samples[i])
            << width << 'x' << height << " set " << set << " sample " << i;
      }
    }
  }
}

TEST(SensorPlaneDecoder, TooLittleInput) {
  ImageProps props{};
  const MemoryStream stream = MemoryStream::Make(128);
  for (const std::size_t size : {26u, 41u, 42u, 26u + 16u + 65535u}) {
    InputStream input(Bytes(size, 0));
    EXPECT_EQ(SensorPlaneDecoder(ChosenLevel().planeLines(), *input.get(), GeometryOf(8, 8), props,
                                 *stream.get()),
              DEIMG_BAD_DATA)
        << size;
    EXPECT_FALSE(input.isOpen());
  }
  InputStream input(Bytes(10, 0));
  CallerStream lacking = *stream.get();
  lacking.Seek = nullptr;
  EXPECT_EQ(SensorPlaneDecoder(ChosenLevel().planeLines(), *input.get(), GeometryOf(8, 8), props,
                               lacking),
            DEIMG_MISSING);
  EXPECT_FALSE(input.isOpen());
}

TEST(Geometry, DerivedReducedAndChecked) {
  SensorRecord sensor{};
  sensor.width = 3072;
  sensor.height = 2048;
  sensor.areaLeft = 13;
  sensor.areaTop = 7;
  sensor.areaRight = 3060;
  sensor.areaBottom = 2040;
  sensor.auxTop = 9;
  sensor.auxBottom = 101;
  const ImageGeometry g = DeriveGeometry(sensor);
  EXPECT_EQ(sensor.auxTop, 8);
  EXPECT_EQ(sensor.auxBottom, 100);
  EXPECT_EQ(g.auxHeight, 93);
  EXPECT_EQ(g.areaWidth, 3048);
  EXPECT_EQ(g.outHeight, 2034);
  EXPECT_TRUE(IsSupported(g));
  const ImageGeometry r = ReduceGeometry(g);
  EXPECT_EQ(r.sensorWidth, 512);
  EXPECT_EQ(r.sensorHeight, 340);  // 341 rounded down to even
  EXPECT_EQ(r.areaLeft, 2);
  EXPECT_EQ(r.areaTop, 0);
  EXPECT_EQ(r.areaWidth, 508);

  const auto supported = [](int width, int height, int left, int right, int top, int bottom) {
    SensorRecord s{};
    s.width = static_cast<std::uint16_t>(width);
    s.height = static_cast<std::uint16_t>(height);
    s.areaLeft = static_cast<std::uint16_t>(left);
    s.areaRight = static_cast<std::uint16_t>(right);
    s.areaTop = static_cast<std::uint16_t>(top);
    s.areaBottom = static_cast<std::uint16_t>(bottom);
    return IsSupported(DeriveGeometry(s));
  };
  EXPECT_TRUE(supported(8, 2, 0, 7, 0, 1));
  EXPECT_FALSE(supported(9, 2, 0, 7, 0, 1));
  EXPECT_TRUE(supported(6, 1, 0, 5, 0, 0));
  EXPECT_FALSE(supported(4, 1, 0, 3, 0, 0));
  EXPECT_FALSE(supported(6, 0, 0, 5, 0, 0));
  EXPECT_FALSE(supported(8, 2, 0, 8, 0, 1));
  EXPECT_FALSE(supported(8, 2, 5, 4, 0, 1));
  EXPECT_FALSE(supported(8, 2, 7, 2, 0, 1));
  EXPECT_FALSE(supported(8, 2, 0, 7, 0, 2));
  EXPECT_FALSE(supported(8, 2, 0, 7, 2, 1));
  EXPECT_TRUE(supported(32768, 32767, 0, 7, 0, 1));
  EXPECT_FALSE(supported(32768, 32768, 0, 7, 0, 1));
}

class PlaneLoops : public testing::LevelTest {};
DEIMG_INSTANTIATE_LEVELS(PlaneLoops);

TEST_P(PlaneLoops, BlackLevelsByMosaicPosition) {
  const MemoryStream stream = MemoryStream::Make(2 * 8 * 3);
  for (int i = 0; i < 24; ++i) stream.memory()[2 * i] = 25;
  const std::uint16_t black[4] = {10, 20, 25, 24};
  ASSERT_EQ(BlackLevelSubtraction(level.planeLines(), GeometryOf(8, 3), *stream.get(), black),
            DEIMG_OK);
  const int expected[3][2] = {{5, 15}, {1, 0}, {5, 15}};
  for (int i = 0; i < 24; ++i) {
    EXPECT_EQ(stream.memory()[2 * i], expected[i / 8][i % 2]) << i;
  }
}

TEST(PointWhiteBalance, GainsFromAverages) {
  const auto gains = [](int r, int g1, int g2, int b) {
    return GainsFromSums({{r * 100, g1 * 100, g2 * 100, b * 100}, {100, 100, 100, 100}});
  };
  using Gains = std::array<std::uint32_t, 4>;
  EXPECT_EQ(gains(1000, 1000, 1000, 1000), (Gains{832, 832, 832, 832}));
  EXPECT_EQ(gains(100, 1000, 1000, 500), (Gains{4870, 832, 832, 1664}));
  EXPECT_EQ(gains(0, 0, 0, 0), (Gains{832, 832, 832, 832}));
  EXPECT_EQ(GainsFromSums({{3, 0, 2, 1}, {2, 0, 2, 1}})[0], 416u);  // 1.5 rounds up to 2
}

TEST(PointWhiteBalance, SquareIsCutToThePlane) {
  // Red sites 100, green 200 and 400, blue 50, with a white column and line at the far edges.
  constexpr int kWidth = 40, kHeight = 30;
  const MemoryStream stream = MemoryStream::Make(2 * kWidth * kHeight);
  const int site[4] = {100, 200, 250, 50};
  for (int i = 0; i < kWidth * kHeight; ++i) {
    const int value = site[i / kWidth % 2 * 2 + i % 2];
    stream.memory()[2 * i] = static_cast<std::uint8_t>(value);
  }
  for (const auto& [x, y] : {std::pair{0, 0}, {39, 29}, {39, 28}, {38, 29}, {11, 9}, {25, 3}}) {
    DevelopParams params{};
    params.wbPointX = x;
    params.wbPointY = y;
    ASSERT_EQ(PointWhiteBalance(*stream.get(), GeometryOf(kWidth, kHeight), params), DEIMG_OK);
    EXPECT_EQ(params.whiteBalance.wbGainsSet, 1);
    const std::uint32_t red = params.whiteBalance.wbGains[0];
    const std::uint32_t blue = params.whiteBalance.wbGains[3];
    if (x == 39 && y == 29) {  // one blue sample is all there is: the others count as 1
      EXPECT_EQ(blue, 832u * 2 / 100);
      EXPECT_EQ(red, 832u);
    } else if (x < 38 && y < 28) {
      EXPECT_EQ(red, 450u * 832 / 200);
      EXPECT_EQ(blue, 450u * 832 / 100);
    }
  }
}

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
    const auto reduce = [&] {
      planes.assign(planes.size(), 0);
      return PreviewReduction(level.planeLines(), *stream.get(), g, r, planes.data());
    };
    ASSERT_EQ(reduce(), DEIMG_OK);
    const auto together = planes;
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
    EXPECT_EQ(PreviewReduction(lines, *stream.get(), g, r, planes.data()), expected);
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

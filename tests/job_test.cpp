// Whole jobs through the exported function.
#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <string>

#include "api/thumbnail.h"
#include "rawfile/random_camera.h"
#include "support/fault_heap.h"
#include "support/level_choice.h"
#include "support/streams.h"

namespace deimg {
namespace {

using testing::Develop;
using testing::InputStream;
using testing::Op;
using testing::Outcome;
using testing::OutputStream;
using testing::RecordedParams;
using Bytes = std::vector<std::uint8_t>;

Bytes Sample(const char* name) {
  return testing::ReadFileBytes(std::string(DEIMG_SAMPLES) + "/" + name + ".raw");
}

/// FNV-1a over all lines.
std::uint64_t HashOf(const Outcome& outcome) {
  std::uint64_t hash = 14695981039346656037u;
  for (const auto& line : outcome.lines) {
    for (const std::uint8_t byte : line) hash = (hash ^ byte) * 1099511628211u;
  }
  return hash;
}

class JobAtLevel : public testing::LevelTest {};
DEIMG_INSTANTIATE_LEVELS(JobAtLevel);

/// Bytes recorded when every picture agreed with an independent implementation of the development.
TEST_P(JobAtLevel, BytesNeverChange) {
  const testing::LevelScope scope(level);
  const int choices = testing::LevelScope::Choices();
  struct Case {
    const char* sample;
    std::uint32_t flags, format;
    std::size_t lines, lineBytes;
    std::uint64_t hash;
  };
  const Case cases[] = {
      {"coffee", 0, 4, 436, 1872, 4814337207319966290u},
      {"coffee", 0, 7, 436, 3744, 6029915691698756022u},
      {"chart", 0, 4, 500, 2256, 11909753649798268135u},
      {"chart", 0x20, 4, 500, 2256, 17851006035119138175u},
      {"chart", 0x200, 4, 120, 480, 5070461263086762769u},
      {"landscape", 0, 4, 1012, 4560, 14577411735662374249u},
      {"landscape", 0x100, 4, 168, 756, 12116798228552349431u},
  };
  for (const Case& c : cases) {
    const Outcome outcome = Develop(Sample(c.sample), c.flags, c.format);
    ASSERT_EQ(outcome.result, DEIMG_OK) << c.sample;
    EXPECT_EQ(outcome.lines.size(), c.lines);
    EXPECT_EQ(outcome.lines[0].size(), c.lineBytes);
    EXPECT_EQ(HashOf(outcome), c.hash)
        << c.sample << ' ' << c.flags << ' ' << c.format << " lines " << outcome.lines.size()
        << " bytes " << outcome.lines[0].size();
  }
  // Random cameras, 16 bits, each with its own settings.
  std::uint64_t all = 0;
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    const Outcome outcome = Develop(Serialize(rawfile::RandomCamera(seed)), 0, 7);
    ASSERT_EQ(outcome.result, DEIMG_OK) << seed;
    all = all * 31 + HashOf(outcome);
  }
  EXPECT_EQ(all, 9187354399063195119u);
  EXPECT_GE(testing::LevelScope::Choices(), choices + 67) << "this level ran";
}

TEST(Job, ChecksItsArgumentsInOrder) {
  InputStream input({});
  OutputStream output;
  const auto develop = [](CallerStream* in, std::uint32_t flags, std::uint32_t format,
                          CallerStream* out) {
    return DEImg_DevelopM480(in, flags, format, nullptr, out);
  };
  EXPECT_EQ(develop(nullptr, 1, 5, nullptr), DEIMG_MISSING);
  EXPECT_EQ(develop(input.get(), 1, 5, nullptr), DEIMG_UNSUPPORTED);
  EXPECT_EQ(develop(input.get(), 0x120, 0x104, nullptr), DEIMG_BAD_REQUEST);
  EXPECT_EQ(develop(input.get(), 0x20, 0x107, nullptr), DEIMG_MISSING);
  EXPECT_TRUE(output.reports.empty());
  EXPECT_EQ(develop(input.get(), 0, 4, output.get()), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(output.reports, (std::vector<int>{1}));
  EXPECT_EQ(output.openMode, 0);
  CallerStream lacking = *input.get();
  lacking.Tell = nullptr;
  EXPECT_EQ(develop(&lacking, 0, 4, output.get()), DEIMG_MISSING);
}

TEST(Job, ReportsByMode) {
  const Bytes file = Sample("coffee");
  const auto reports = [&](std::uint16_t mode, std::uint32_t flags) {
    const Outcome outcome = Develop(file, flags, 4, nullptr, mode);
    EXPECT_EQ(outcome.result, DEIMG_OK);
    return outcome.reports;
  };
  for (const std::uint32_t flags : {0u, 0x100u, 0x200u}) {
    EXPECT_TRUE(reports(DEIMG_PROGRESS_NEVER, flags).empty());
    EXPECT_EQ(reports(DEIMG_PROGRESS_FINAL, flags), (std::vector<int>{100}));
  }
  EXPECT_EQ(reports(DEIMG_PROGRESS_ALL, 0x200), (std::vector<int>{1, 7, 50, 70, 100}));
  const std::vector<int> full = reports(DEIMG_PROGRESS_ALL, 0);
  EXPECT_EQ(full.front(), 1);
  EXPECT_EQ(full.back(), 100);
  for (std::size_t i = 2; i + 1 < full.size(); ++i) EXPECT_GE(full[i], full[i - 1] + 12);

  // A host may take its Progress away, or first give it, at any call.
  for (const std::uint32_t flags : {0u, 0x100u, 0x200u}) {
    for (const Op at : {Op::kOpen, Op::kWrite, Op::kProgress}) {
      for (const bool gives : {false, true}) {
        InputStream input(file);
        decltype(CallerStream::Progress) progress = nullptr;
        CallerStream* stream = nullptr;
        OutputStream output(DEIMG_PROGRESS_ALL, [&](Op op, int n) {
          if (op == at && n == (op == Op::kOpen ? 1 : 2))
            stream->Progress = gives ? progress : nullptr;
          return 0u;
        });
        stream = output.get();
        progress = stream->Progress;
        if (gives) output.get()->Progress = nullptr;
        EXPECT_EQ(DEImg_DevelopM480(input.get(), flags, 4, nullptr, output.get()), DEIMG_OK);
        const bool last = !output.reports.empty() && output.reports.back() == 100;
        EXPECT_EQ(last, gives && at != Op::kProgress) << flags << static_cast<int>(at);
      }
    }
  }
}

TEST(Job, FileBackedPlaneGivesTheSameBytes) {
  for (std::uint64_t seed = 100; seed < 106; ++seed) {
    rawfile::RandomLimits limits;
    limits.previewable = true;
    const Bytes file = Serialize(rawfile::RandomCamera(seed, limits));
    for (const std::uint32_t flags : {0u, 0x20u, 0x100u, 0x200u}) {
      const Outcome inMemory = Develop(file, flags, 4);
      const testing::FaultScope faults({.largest = 1 << 20});
      EXPECT_EQ(Develop(file, flags, 4), inMemory) << seed << ' ' << flags;
      EXPECT_EQ(inMemory.result, DEIMG_OK);
      EXPECT_GT(testing::FaultScope::LargestRequest(), 1u << 21) << "the probe was refused";
    }
  }
}

TEST(Job, WhiteBalanceChoices) {
  const Bytes file = Sample("coffee");
  const Outcome recorded = Develop(file, 0, 4);
  DevelopParams params = RecordedParams();
  const auto gains = [](const Outcome& outcome) {
    std::array<std::uint32_t, 4> g{};
    for (std::size_t i = 0; i < 4; ++i) g[i] = outcome.params.whiteBalance.wbGains[i];
    return g;
  };
  EXPECT_EQ(Develop(file, 0, 4, &params), recorded);

  // From a point, in every kind of job: the same gains, and the same picture as with them given.
  params.wbPreset = DEIMG_WB_POINT;
  params.wbPointX = 300;
  params.wbPointY = 100;
  const Outcome point = Develop(file, 0, 4, &params);
  EXPECT_EQ(point.result, DEIMG_OK);
  EXPECT_EQ(point.params.whiteBalance.wbGainsSet, 1);
  EXPECT_NE(point, recorded);
  for (const std::uint32_t flags : {0x20u, 0x100u, 0x200u}) {
    EXPECT_EQ(gains(Develop(file, flags, 4, &params)), gains(point));
  }
  EXPECT_EQ(Develop(file, 0, 4, &point.params), point) << "gains that are there are kept";

  DevelopParams given = point.params;
  given.wbPreset = DEIMG_WB_GAINS;
  EXPECT_EQ(gains(Develop(file, 0, 4, &given)), gains(point));
  given.whiteBalance.wbGainsSet = 0;
  EXPECT_NE(gains(Develop(file, 0, 4, &given)), gains(point)) << "the file's entry 6";
  given.wbPreset = 2;
  given.whiteBalance.wbGainsSet = 1;
  EXPECT_NE(gains(Develop(file, 0, 4, &given)), gains(point)) << "the file's entry 2";
  given.wbPreset = 7;
  EXPECT_EQ(Develop(file, 0, 4, &given).result, DEIMG_UNSUPPORTED);

  const std::size_t width = recorded.lines[0].size() / 3;
  const std::size_t height = recorded.lines.size();
  for (const auto& [x, y, result] : {std::tuple{width, std::size_t{0}, DEIMG_UNSUPPORTED},
                                     {width - 1, height - 1, DEIMG_OK},
                                     {std::size_t{0}, height, DEIMG_UNSUPPORTED}}) {
    params.wbPointX = static_cast<std::int32_t>(x);
    params.wbPointY = static_cast<std::int32_t>(y);
    EXPECT_EQ(Develop(file, 0, 4, &params).result, static_cast<std::uint32_t>(result));
  }
  params.wbPointX = -1;
  EXPECT_EQ(Develop(file, 0, 4, &params).result, DEIMG_UNSUPPORTED);
}

TEST(Job, SettingsThatAreRefused) {
  const Bytes file = Sample("coffee");
  struct Case {
    std::int16_t DevelopParams::*field;
    std::int16_t value;
    std::uint32_t result;
    bool opened;  // the output, before it is noticed
  };
  const Case cases[] = {
      {&DevelopParams::processingSet, 2, DEIMG_UNSUPPORTED, false},
      {&DevelopParams::processingSet, 4, DEIMG_UNSUPPORTED, false},
      {&DevelopParams::matrixLevel, 2, DEIMG_UNSUPPORTED, false},
      {&DevelopParams::colourLevel, -2, DEIMG_UNSUPPORTED, false},
      {&DevelopParams::toneLevel, 2, DEIMG_UNSUPPORTED, true},
      {&DevelopParams::exposureAdjust, 21, DEIMG_MISSING, true},
      {&DevelopParams::exposureAdjust, -32768, DEIMG_MISSING, true},
  };
  for (const Case& c : cases) {
    DevelopParams params = RecordedParams();
    params.*c.field = c.value;
    InputStream input(file);
    OutputStream output;
    EXPECT_EQ(DEImg_DevelopM480(input.get(), 0, 4, &params, output.get()), c.result) << c.value;
    EXPECT_EQ(output.openMode == DEIMG_OPEN_TRUNCATE, c.opened) << c.value;
    EXPECT_TRUE(output.lines.empty());
    EXPECT_FALSE(output.closed);
  }
  DevelopParams params = RecordedParams();
  params.toneLevel = 5;
  params.matrixSelect = 1;  // plain processing looks at no tone level
  EXPECT_EQ(Develop(file, 0, 4, &params).result, DEIMG_OK);
}

TEST(Job, PropertiesThatAreRefused) {
  const auto result = [](auto change) {
    rawfile::RandomLimits limits;
    limits.previewable = true;
    rawfile::RawFile file = rawfile::RandomCamera(4, limits);
    file.properties.processingSet = 0;
    change(file.properties);
    return Develop(Serialize(file), 0, 4).result;
  };
  using rawfile::PropertySet;
  EXPECT_EQ(result([](PropertySet&) {}), DEIMG_OK);
  EXPECT_EQ(result([](PropertySet& p) { p.sensitivity = 200; }), DEIMG_UNSUPPORTED);
  EXPECT_EQ(result([](PropertySet& p) { p.sensor.width++; }), DEIMG_UNSUPPORTED);
  EXPECT_EQ(result([](PropertySet& p) { p.sensor.area.bottom = p.sensor.height; }),
            DEIMG_UNSUPPORTED);
}

TEST(Job, SingleLineAndShiftedColumn) {
  rawfile::RandomLimits limits;
  limits.minWidth = limits.minHeight = 60;
  rawfile::RawFile file = rawfile::RandomCamera(9, limits);
  file.properties.sensor.area = {13, 7, 32, 9};
  const Outcome three = Develop(Serialize(file), 0, 4);
  ASSERT_EQ(three.lines.size(), 3u);
  file.properties.sensor.area = {13, 7, 32, 7};
  const Outcome one = Develop(Serialize(file), 0, 4);
  ASSERT_EQ(one.lines.size(), 1u);
  EXPECT_EQ(one.lines[0], three.lines[0]);
  EXPECT_EQ(one.reports, (std::vector<int>{1, 100}));
  // An area that starts at column 12 is delivered from column 11 on.
  file.properties.sensor.area.left = 11;
  const Outcome from11 = Develop(Serialize(file), 0, 4);
  file.properties.sensor.area.left = 12;
  const Outcome from12 = Develop(Serialize(file), 0, 4);
  ASSERT_EQ(from12.lines[0].size(), 3u * 21);
  EXPECT_TRUE(std::equal(from12.lines[0].begin(), from12.lines[0].end(), from11.lines[0].begin()));
}

TEST(Thumbnail, LetterboxesAndCuts) {
  const auto blackRows = [](int width, int height) {
    const Bytes picture(static_cast<std::size_t>(3 * width * height), 200);
    ThumbnailBuffer thumbnail;
    EXPECT_TRUE(thumbnail.Allocate());
    thumbnail.Resample(picture.data(), width, height);
    std::pair<int, int> bars{0, 0};
    const auto row = [&](int y) { return thumbnail.row(y)[0]; };
    while (bars.first < 120 && row(bars.first) == 0) ++bars.first;
    while (bars.second < 120 && row(119 - bars.second) == 0) ++bars.second;
    return bars;
  };
  EXPECT_EQ(blackRows(512, 340), (std::pair{7, 6}));
  EXPECT_EQ(blackRows(160, 120), (std::pair{0, 0}));
  EXPECT_EQ(blackRows(100, 400), (std::pair{0, 0})) << "taller than the thumbnail: cut";
  EXPECT_EQ(blackRows(3000, 2), (std::pair{60, 59})) << "a single row";
  // Nearest pixel to the left and above.
  Bytes ramp;
  for (int i = 0; i < 320 * 240; ++i)
    ramp.insert(ramp.end(), 3, static_cast<std::uint8_t>(i % 320));
  ThumbnailBuffer thumbnail;
  ASSERT_TRUE(thumbnail.Allocate());
  thumbnail.Resample(ramp.data(), 320, 240);
  EXPECT_EQ(thumbnail.row(0)[3 * 77], 154);
  EXPECT_EQ(thumbnail.row(119)[ThumbnailBuffer::kRowBytes - 1], 318 % 256);
}

}  // namespace
}  // namespace deimg

// Resolving the settings, and the values derived from the tuning tables.
#include <gtest/gtest.h>

#include "pipeline/development_tables.h"
#include "pipeline/settings.h"
#include "support/streams.h"

namespace deimg {
namespace {

using Values = std::array<std::int16_t, 3>;

TEST(ApplyDefaults, WritesDefaultsOnlyIntoAnUnfilledBlock) {
  DevelopParams params{};
  params.unused4[1] = 9;
  params.chromaMedian = -1;
  params.toneLevel = 1;
  params.wbPreset = 6;
  params.whiteBalance.wbGainsSet = 1;
  params.whiteBalance.wbGains[2] = 77;
  ApplyDefaults(params);
  EXPECT_EQ(params.toneLevel, DEIMG_AS_RECORDED);
  EXPECT_EQ(params.wbPreset, DEIMG_AS_RECORDED);
  EXPECT_EQ(params.chromaMedian, -1);
  EXPECT_EQ(params.unused4[1], 0);
  EXPECT_EQ(params.whiteBalance.wbGainsSet, 0);
  EXPECT_EQ(+params.whiteBalance.wbGains[2], 77u) << "the gains stay, but are no longer valid";

  for (const int preset : {-1, 6}) {
    params.filled = 1;
    params.wbPreset = static_cast<std::int16_t>(preset);
    params.whiteBalance.wbGainsSet = 1;
    ApplyDefaults(params);
    EXPECT_EQ(params.whiteBalance.wbGainsSet, 1);
  }
  params.whiteBalance.wbGainsSet = 2;
  ApplyDefaults(params);
  EXPECT_EQ(+params.whiteBalance.wbGains[2], 0u);
}

TEST(ResolveSettings, TakesWhatIsRecorded) {
  ImageProps props{};
  props.shooting[7] = 2;
  props.levels[13] = 1;
  props.levels[14] = 0xFFFF;
  props.levels[15] = 3;
  props.levels[42] = 0xFFFF;
  props.presetGains[2][0] = 65535;
  props.colourTemperatures[3] = 5200;
  DevelopParams params = testing::RecordedParams();
  DevelopSettings settings;
  ASSERT_EQ(ResolveSettings(params, props, settings), DEIMG_OK);
  EXPECT_EQ(settings.toneLevel, 1);
  EXPECT_EQ(settings.matrixLevel, -1);
  EXPECT_EQ(settings.processingSet, 3);
  EXPECT_EQ(settings.colourLevel, -1);
  EXPECT_EQ(settings.wbGains[0], 65535);
  EXPECT_EQ(settings.colourTemperature, 5200);
  EXPECT_EQ(params.whiteBalance.wbGainsSet, 1);
  EXPECT_EQ(+params.whiteBalance.wbGains[0], 65535u);

  // Gains are there: only the colour temperature is taken by the preset.
  params.wbPreset = -1;
  props.colourTemperatures[0] = 4000;
  ASSERT_EQ(ResolveSettings(params, props, settings), DEIMG_OK);
  EXPECT_EQ(settings.colourTemperature, 4000);
  params.whiteBalance.wbGainsSet = 0;
  for (const int preset : {-2, -1, 7}) {
    params.wbPreset = static_cast<std::int16_t>(preset);
    EXPECT_EQ(ResolveSettings(params, props, settings), DEIMG_UNSUPPORTED);
  }
}

TEST(Interpolate, WeightsIn4096ths) {
  EXPECT_EQ(Interpolate(763, 652, 1000, 1000), 707);
  EXPECT_EQ(Interpolate(100, 200, 0, 0), 150);
  EXPECT_EQ(Interpolate(-3, -4, 1000, 1000), -3) << "truncated toward zero";
  EXPECT_EQ(Interpolate(1, 3, 400000, 400000), 2);
  (void)Interpolate(1, 2, 0x7FFFFFFF, INT32_MIN);  // distances that wrapped: no trap
  (void)Interpolate(1, 2, 0x7FFFFFFF, -0x7FFFFFFF);
}

TEST(LookUp, LinearBetweenKeysAndConstantOutside) {
  TuningTables::Group<3> group{};
  group[0] = {3000, {763, -10, 0}};
  group[1] = {5000, {652, 10, 7}};
  group[2] = {7000, {600, 20, 9}};
  group[3] = {-1, {1, 1, 1}};
  Values v{};
  const auto at = [&](int t) {
    EXPECT_EQ(LookUp(group, t, v), DEIMG_OK);
    return v;
  };
  EXPECT_EQ(at(2500), (Values{763, -10, 0}));
  EXPECT_EQ(at(3000), (Values{763, -10, 0}));
  EXPECT_EQ(at(4000), (Values{707, 0, 3}));
  EXPECT_EQ(at(5000), (Values{652, 10, 7}));
  EXPECT_EQ(at(7000), (Values{600, 20, 9}));
  EXPECT_EQ(at(65535), (Values{600, 20, 9}));
  for (std::size_t i = 0; i < 7; ++i) group[i].key = static_cast<std::int32_t>(1000 * i);
  EXPECT_EQ(at(6000), group[6].values) << "the search ends at the seventh record";
  group[0].key = -1;
  EXPECT_EQ(LookUp(group, 5000, v), DEIMG_BAD_TUNING);
}

/// Properties with simple tables: one record per group, key 5000.
class DeriveTablesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Put(16, kScalars + 1);
    Put(Word(-15), kScalars + 2);
    Put(10, kScalars + 3);
    Put(120, kScalars + 4);
    Put(112, kScalars + 5);
    Put(196, kScalars + 6);
    for (int i = 0; i < 21; ++i) {
      Record(kMatrices + 12 * i, i);
      Record(kOffsets + 8 * i, i);
      Record(kGains + 10 * i, i);
      if (i < 7) Record(kWeights + 6 * i, i);
    }
    settings_.colourTemperature = 4000;
  }
  static constexpr int kScalars = 1, kMatrices = 10, kOffsets = kMatrices + 21 * 12,
                       kGains = kOffsets + 21 * 8, kWeights = kGains + 21 * 10;
  static_assert(kWeights + 7 * 6 == ImageProps::kTuningTableWords);

  static std::uint16_t Word(int value) { return static_cast<std::uint16_t>(value); }
  void Put(int value, int at) { props_.tuningTables[at] = Word(value); }
  /// Key 5000 and -1 alternate, so that every group's first record counts alone.
  void Record(int at, int i) {
    Put(i % 7 == 0 ? 5000 : -1, at);
    Put(i % 7 == 0 ? 0 : -1, at + 1);
  }
  ImageProps props_{};
  DevelopSettings settings_;
  DevelopmentTables tables_;
};

TEST_F(DeriveTablesTest, UnpacksAndRelatesToTheNeutralEntry) {
  for (int i = 0; i < 8; ++i) Put(100 + i, kMatrices + 12 * 7 + 3 + i);  // group 1, record 0
  settings_.colourLevel = 1;
  for (int i = 0; i < 4; ++i) {
    Put(20 + i, kOffsets + 8 * 14 + 3 + i);
    Put(5 + i, kOffsets + 8 * 8 + 3 + i);  // neutral: group 1, record 1
  }
  for (int i = 0; i < 7; ++i) Put(50 + i, kGains + 10 * 7 + 3 + i);
  Put(49, kGains + 10 * 8 + 3);
  for (int i = 0; i < 3; ++i) Put(70 + i, kWeights + 2 + i);
  ASSERT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_OK);
  EXPECT_EQ(tables_.colourMatrix, (std::array<std::int16_t, 12>{100, -100, -101, 101, 102, 103, 104,
                                                                105, 106, -106, -107, 107}));
  EXPECT_EQ(tables_.colourOffsets, (std::array<std::int16_t, 4>{20, 21, 22 - 15 - 7, 23 + 10 - 8}));
  EXPECT_EQ(tables_.colourGains, (std::array<std::int16_t, 7>{200, 51, 52, 53, 54, 55, 56}));
  EXPECT_EQ(tables_.luminanceWeights, (Values{70, 71, 72}));
  EXPECT_EQ(tables_.chromaGainCb, 120);
  EXPECT_EQ(tables_.chromaGainCr, 112);

  Put(70, kGains + 10 * 7 + 3);  // 70 x 196 / 49 = 280
  ASSERT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_OK);
  EXPECT_EQ(tables_.colourGains[0], 255);
}

TEST_F(DeriveTablesTest, RefusesInconsistentTables) {
  Put(49, kGains + 10 * 8 + 3);
  ASSERT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_OK);
  settings_.matrixLevel = 2;
  EXPECT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_UNSUPPORTED);
  settings_.matrixLevel = 0;
  settings_.colourLevel = -2;
  EXPECT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_UNSUPPORTED);
  settings_.colourLevel = 0;
  Record(kWeights, 1);
  ASSERT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_OK) << "weights are looked at later";
  EXPECT_EQ(tables_.luminanceStatus, static_cast<Result>(DEIMG_BAD_TUNING));
  EXPECT_EQ(tables_.luminanceWeights, Values{});
  Put(0, kGains + 10 * 8 + 3);
  EXPECT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_BAD_TUNING);
  Put(15, kScalars + 1);
  EXPECT_EQ(DeriveTables(props_, settings_, tables_), DEIMG_BAD_TUNING);
}

TEST(ResolveIndices, KnowsFiveSensitivitiesAndFourSets) {
  ImageProps props{};
  DevelopSettings settings;
  const auto resolve = [&](int sensitivity, int set) {
    props.shooting[2] = static_cast<std::uint16_t>(sensitivity);
    settings.processingSet = static_cast<std::int16_t>(set);
    return ResolveIndices(props, settings);
  };
  EXPECT_EQ(resolve(268, 3), DEIMG_OK);
  EXPECT_EQ(settings.isoClass, 4u);
  EXPECT_EQ(settings.setIndex, 3u);
  EXPECT_EQ(resolve(160, -1), DEIMG_OK);
  EXPECT_EQ(settings.isoClass, 0u);
  EXPECT_EQ(settings.setIndex, 0u);
  EXPECT_EQ(resolve(200, 0), DEIMG_UNSUPPORTED);
  for (const int set : {-2, 2, 4}) EXPECT_EQ(resolve(160, set), DEIMG_UNSUPPORTED);
}

}  // namespace
}  // namespace deimg

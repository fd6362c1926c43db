// Kernels and tables of the colour path.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>

#include "graph/last_stage_rgb.h"
#include "stages/colour/chroma_suppress.h"
#include "stages/colour/color_system_proc.h"
#include "stages/colour/hokan_circuit.h"
#include "stages/colour/hokan_vh.h"
#include "stages/colour/matrix4x3.h"
#include "stages/colour/median_crcb.h"
#include "stages/colour/rgb_tone_curve.h"
#include "stages/colour/vh_diff.h"
#include "stages/colour/white_balance.h"
#include "support/kernel_choice.h"

namespace deimg {
namespace {

using Samples = std::vector<Sample>;

class ColourKernels : public testing::KernelTest {};
INSTANTIATE_TEST_SUITE_P(Levels, ColourKernels, ::testing::ValuesIn(kKernelLevels),
                         testing::LevelName);

Samples Random(std::size_t n, Sample low, Sample high, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<Sample> value(low, high);
  Samples samples(n);
  for (Sample& s : samples) s = value(random);
  return samples;
}

struct Fixture {
  DevelopSettings settings;
  DevelopmentTables tables;
  std::uint8_t block[TuningBlock::kSize] = {};
  StageContext context{ChosenKernels(), settings, tables, TuningBlock(block), 16, 16};
};

TEST_P(ColourKernels, WhiteBalanceGainPedestalClip) {
  const std::uint16_t in[] = {0, 100, 4095, 4095, 65535, 65535, 1000, 1001};
  Samples out(8);
  k->wideMosaic.whiteBalanceLine(in, 8, 1024, 1536, 4095, out.data());
  EXPECT_EQ(out, (Samples{128, 278, 4095, 4095, 4095, 4095, 1128, 1629}));
  k->wideMosaic.whiteBalanceLine(in, 8, -1024, 1024, 300, out.data());
  EXPECT_EQ(out[2], -4095 + 128) << "no clip below";
  EXPECT_EQ(out[1], 228);
  EXPECT_EQ(out[7], 300);
}

TEST(WhiteBalance, ExposureTableAndClipLevel) {
  const auto make = [](int adjust, int green1, int green2) {
    Fixture f;
    f.settings.exposureAdjust = static_cast<std::int16_t>(adjust);
    f.settings.wbGains = {1024, green1, green2, 1024};
    return std::make_unique<WhiteBalance<Sample>>(f.context);
  };
  EXPECT_EQ(make(0, 1024, 1024)->exposureTable(), nullptr);
  auto up = make(10, 1024, 1024);
  EXPECT_EQ(up->clipLevel(), 4095);
  EXPECT_EQ(up->exposureTable()[100], 200);
  EXPECT_EQ(up->exposureTable()[3000], 4095);
  EXPECT_EQ(make(-10, 1024, 1024)->clipLevel(), 2048);
  EXPECT_EQ(make(-20, 1000, 1003)->clipLevel(), 1001);
  EXPECT_EQ(make(-20, 1 << 30, 0)->clipLevel(), 4095);
  EXPECT_EQ(make(-7, 1024, 1024)->exposureTable()[4095], 2520);  // 4095 x 0.6155722
}

TEST_P(ColourKernels, VHDiffActivityDownMinusAlong) {
  const Samples ramp = {0, 10, 20, 30, 40, 50};
  Samples out(6);
  k->wideMosaic.directionMeasureLine(ramp.data(), ramp.data(), ramp.data(), ramp.data(),
                                     ramp.data(), 6, out.data());
  EXPECT_EQ(out, (Samples{0, 0, -20, -20, 0, 0}));
  const Samples a(6, 1), b(6, 2), c(6, 5), d(6, 9), e(6, 20);
  k->wideMosaic.directionMeasureLine(a.data(), b.data(), c.data(), d.data(), e.data(), 6,
                                     out.data());
  EXPECT_EQ(out, (Samples{0, 0, 18, 18, 0, 0}));  // |10 - 1 - 20| + |2 - 9|
}

/// The planes of the example line, and the roles of the lines for the other parity.
TEST_P(ColourKernels, MosaicInterpolationFourPlanes) {
  const Samples above = {10, 20, 30, 40}, centre = {50, 60, 70, 80}, below = {90, 100, 110, 120};
  Samples r(4), gr(4), gb(4), b(4);
  const PlaneLines<Sample> planes{r.data(), gr.data(), gb.data(), b.data()};
  k->wideMosaic.interpolateMosaicLine(above.data(), centre.data(), below.data(), false, 4, planes);
  EXPECT_EQ(r, (Samples{200, 240, 280, 280}));
  EXPECT_EQ(gr, (Samples{240, 240, 280, 320}));
  EXPECT_EQ(gb, (Samples{200, 240, 280, 280}));
  EXPECT_EQ(b, (Samples{240, 240, 280, 320}));
  k->wideMosaic.interpolateMosaicLine(above.data(), centre.data(), below.data(), true, 4, planes);
  EXPECT_EQ(gb, (Samples{200, 240, 280, 280}));
  EXPECT_EQ(r, (Samples{200, 240, 280, 280}));

  const Samples direction = {-6, -5, 5, 0};
  gr = {1, 2, 3, 4};
  gb = {5, 6, 7, 8};
  k->wideMosaic.exchangeGreensLine(direction.data(), 5, 4, gr.data(), gb.data());
  EXPECT_EQ(gr, (Samples{5, 2, 3, 4}));
  k->wideMosaic.exchangeGreensLine(direction.data(), -1, 4, gr.data(), gb.data());
  EXPECT_EQ(gb, (Samples{5, 2, 7, 4})) << "a negative threshold exchanges at 0";
}

TEST_P(ColourKernels, HokanCircuitSmallerDifferencesWin) {
  const Samples gr = {240, 240, 280, 320}, gb = {200, 240, 280, 280}, still(4, 0);
  Samples red = {200, 240, 280, 280}, blue = {240, 240, 280, 320};
  k->wideMosaic.colourDifferenceLine(still.data(), 0, false, gr.data(), gb.data(), 4, red.data(),
                                     blue.data());
  EXPECT_EQ(red, (Samples{-20, 0, 0, -20}));
  EXPECT_EQ(blue, (Samples{20, 0, 0, 20}));
  // Directed greens: red with gb, blue with gr; a tie is theirs.
  const Samples direction = {-1, -1, 0, -1};
  red = {200, 240, 280, 281};
  blue = {240, 240, 280, 320};
  k->wideMosaic.colourDifferenceLine(direction.data(), 0, true, gr.data(), gb.data(), 4, red.data(),
                                     blue.data());
  EXPECT_EQ(red, (Samples{0, 0, 0, 1}));
  EXPECT_EQ(blue, (Samples{0, 0, 0, 0}));
  Samples one = {0}, other = {0};
  const Samples g1 = {-1}, g2 = {-2};  // the average of -3 is -1
  k->wideMosaic.colourDifferenceLine(still.data(), 0, false, g1.data(), g2.data(), 1, one.data(),
                                     other.data());
  EXPECT_EQ(one[0], 1);
  EXPECT_EQ(other[0], 1);
}

TEST_P(ColourKernels, MedianCrCbIsTheEighthOfFifteen) {
  for (unsigned seed = 0; seed < 30; ++seed) {
    const int width = seed < 5 ? 5 + static_cast<int>(seed) : 67;
    const auto n = static_cast<std::size_t>(width);
    const Sample range = seed % 3 == 0 ? 3 : seed % 3 == 1 ? 20000 : INT32_MAX;
    const Samples lines[3] = {Random(n, -range, range, seed), Random(n, -range, range, seed + 100),
                              Random(n, -range, range, seed + 200)};
    Samples out(n), s0(n), s1(n), s2(n);
    k->wideMosaic.medianLine(lines[0].data(), lines[1].data(), lines[2].data(), width, s0.data(),
                             s1.data(), s2.data(), out.data());
    for (std::size_t x = 0; x < n; ++x) {
      Sample expected = lines[1][x];
      if (x >= 2 && x + 2 < n) {
        Samples all;
        for (const Samples& line : lines) all.insert(all.end(), &line[x - 2], &line[x + 2] + 1);
        std::nth_element(all.begin(), all.begin() + 7, all.end());
        expected = all[7];
      }
      ASSERT_EQ(out[x], expected) << seed << ' ' << x;
    }
  }
}

TEST_P(ColourKernels, Matrix4x3RowsTruncateTowardZero) {
  const Samples r = {2048, 1, 0}, gr = {0, 0, 0}, b = {0, 0, 0}, gb = {0, 0, 2049};
  Samples out(3);
  const std::int16_t row[] = {717, -717, -113, -1};
  k->wideMosaic.matrixRowLine(r.data(), gr.data(), b.data(), gb.data(), row, 3, out.data());
  EXPECT_EQ(out, (Samples{717, 0, -1}));
  k->wideMosaic.matrixPairLine(r.data(), gb.data(), -1, -2048, 3, out.data());
  EXPECT_EQ(out, (Samples{-1, 0, -2049}));
}

/// The lines that a chain of mosaic kernels makes of random mosaics of 0 to 4095, the extremes
/// among them.
template <typename T>
class MosaicChain {
 public:
  MosaicChain(const MosaicKernels<T>& kernels, std::size_t width, unsigned seed)
      : k_(kernels), n_(static_cast<int>(width)) {
    std::mt19937 random(seed);
    std::vector<std::uint16_t> raw(width);
    for (auto& line : mosaic_) {
      for (auto& s : raw) {
        const unsigned kind = random() % 4;
        s = static_cast<std::uint16_t>(kind == 0 ? 0 : kind == 1 ? 65535 : random() % 4096);
      }
      line.resize(width);
      k_.whiteBalanceLine(raw.data(), n_, 1024 + 300 * (seed % 3), 32767, 4095, line.data());
      Keep(line);
    }
  }

  void Run(Sample threshold, bool choose) {
    auto direction = Line();
    k_.directionMeasureLine(M(1), M(2), M(3), M(4), M(5), n_, direction.data());
    Keep(direction);
    for (const bool odd : {false, true}) {
      auto r = Line(), gr = Line(), gb = Line(), b = Line();
      const PlaneLines<T> planes{r.data(), gr.data(), gb.data(), b.data()};
      k_.interpolateMosaicLine(M(2), M(3), M(4), odd, n_, planes);
      for (const auto* line : {&r, &gr, &gb, &b}) Keep(*line);
      for (const Sample row : {-1, 3}) {
        const std::int16_t m[] = {32767, static_cast<std::int16_t>(row), -32768, 999};
        Wide([&](Sample* out) {
          k_.matrixRowLine(r.data(), gr.data(), b.data(), gb.data(), m, n_, out);
        });
      }
      std::vector<NarrowSample> level(static_cast<std::size_t>(n_));
      k_.suppressionLevelLine(r.data(), b.data(), luminance_.data(), n_, level.data());
      lines_.emplace_back(level.begin(), level.end());
      Wide([&](Sample* out) {
        const std::int16_t weights[] = {-300, 256, 77};
        k_.mixLine(r.data(), b.data(), weights, 8, n_, out);
      });
      auto red = r, blue = b;
      k_.colourDifferenceLine(direction.data(), threshold, choose, gr.data(), gb.data(), n_,
                              red.data(), blue.data());
      Keep(red);
      Keep(blue);
      auto low = Line(), middle = Line(), high = Line(), median = Line();
      k_.medianLine(red.data(), blue.data(), gr.data(), n_, low.data(), middle.data(), high.data(),
                    median.data());
      Keep(median);
      Wide([&](Sample* out) {
        k_.matrixPairLine(red.data(), median.data(), -32768, 1000, n_, out);
      });
      k_.exchangeGreensLine(direction.data(), threshold, n_, gr.data(), gb.data());
      Keep(gr);
      Keep(gb);
      const Sample taps[] = {2, -5, 6, 26};
      Wide([&](Sample* out) {
        k_.verLpfLine({{M(0), M(1), M(2), M(3), M(4), M(5), M(6)}}, taps, odd, n_, out);
      });
    }
    std::array<OwnLine, 7> greens;
    for (std::size_t i = 0; i < greens.size(); ++i) {
      greens[i] = Line();
      (i % 2 == 0 ? k_.spreadEvenColumnsLine : k_.spreadOddColumnsLine)(M(i), n_, greens[i].data());
      Keep(greens[i]);
    }
    SevenLines<T> around{};
    for (std::size_t i = 0; i < greens.size(); ++i) around.line[i] = greens[i].data();
    const Sample smoothTaps[] = {28, 17, 2, -1};
    Wide([&](Sample* out) {
      k_.verticalHighPass3Line(around.line[1], around.line[3], around.line[5], n_, out);
    });
    Wide([&](Sample* out) { k_.verticalHighPass7Line(around, n_, out); });
    Wide([&](Sample* out) { k_.verticalSmooth5Line(around, n_, out); });
    Wide([&](Sample* out) { k_.verticalSmooth7Line(around, smoothTaps, n_, out); });
    constexpr ApcSegments kCurve = {.shift = 3,
                                    .knee1 = 10,
                                    .knee2 = 500,
                                    .last = 8191,
                                    .slope = {0, 2048, 24},
                                    .offset = {0, 4, 30000},
                                    .overflows = false};
    Wide([&](Sample* out) {
      k_.sharpenLine(around, luminance_.data(), lines_.back().data(), 3, kCurve, n_, out);
    });
    Wide([&](Sample* out) {
      k_.aFilterLine(direction.data(), luminance_.data(), luminance_.data(), greens[0].data(),
                     {.core = 3, .step = 2, .full = 200}, n_, out);
    });
  }

  const std::vector<Samples>& lines() const { return lines_; }

 private:
  using OwnLine = std::vector<T>;
  OwnLine Line() const { return OwnLine(static_cast<std::size_t>(n_)); }
  const T* M(std::size_t line) const { return mosaic_[line].data(); }
  void Keep(const OwnLine& line) { lines_.emplace_back(line.begin(), line.end()); }
  template <typename Kernel>
  void Wide(Kernel kernel) {
    Samples out(luminance_.begin(), luminance_.begin() + n_);
    kernel(out.data());
    lines_.push_back(std::move(out));
  }

  const MosaicKernels<T>& k_;
  const int n_;
  std::array<OwnLine, 7> mosaic_;
  const Samples luminance_ = Random(200, -70000, 70000, 5);
  std::vector<Samples> lines_;
};

TEST_P(ColourKernels, NarrowMosaicsGiveTheSameAsWideOnes) {
  unsigned seed = 0;
  for (const std::size_t width : {8u, 10u, 34u, 130u}) {
    for (const Sample threshold : {-32768, -100, 0, 7, 12285, 32767}) {
      MosaicChain<NarrowSample> narrow(k->narrowMosaic, width, ++seed);
      MosaicChain<Sample> wide(k->wideMosaic, width, seed);
      narrow.Run(threshold, seed % 2 == 0);
      wide.Run(threshold, seed % 2 == 0);
      ASSERT_EQ(narrow.lines(), wide.lines()) << width << ' ' << threshold;
    }
  }
}

TEST(DevelopSettings, NarrowMosaicsNeedHarmlessGains) {
  DevelopSettings settings;
  settings.wbGains = {0, 1024, 32767, 1};
  EXPECT_TRUE(settings.mosaicIsNarrow());
  settings.wbGains[2] = 32768;
  EXPECT_FALSE(settings.mosaicIsNarrow());
  settings.wbGains[2] = -1;
  EXPECT_FALSE(settings.mosaicIsNarrow());
}

TEST(ChromaSuppress, CurveSegments) {
  Samples t(kSuppressionCurveSize);
  ASSERT_EQ(BuildSuppressionCurve({0, 1, 2, 4, 10, 100, 0, 900, 8}, t.data()), DEIMG_OK);
  const std::pair<int, Sample> expected[] = {
      {0, 64},   {1, 68},   {16, 128}, {448, 128}, {449, 127}, {600, 109}, {672, 100},
      {673, 99}, {900, 71}, {901, 70}, {970, 1},   {971, 0},   {1023, 0}};
  for (const auto& [i, value] : expected) EXPECT_EQ(t[static_cast<std::size_t>(i)], value) << i;
  ASSERT_EQ(BuildSuppressionCurve({0, 0, 0, 0, 0, 128, 1, 1023, 0}, t.data()), DEIMG_OK);
  EXPECT_EQ(t, Samples(1024, 128));
  ASSERT_EQ(BuildSuppressionCurve({0, 2, 2, 4, 10, 100, 0, 900, 8}, t.data()), DEIMG_OK);
  EXPECT_EQ(t[31], 124);
  // Positions beyond the table are cut, whatever their codes say.
  EXPECT_EQ(BuildSuppressionCurve({0, 3, 8, 8, 65535, 65535, 0, 65535, 65535}, t.data()), DEIMG_OK);
  EXPECT_EQ(BuildSuppressionCurve({0, 4, 0, 0, 0, 0, 0, 0, 0}, t.data()), DEIMG_UNSUPPORTED);
  for (const std::uint16_t code : std::array<std::uint16_t, 4>{3, 9, 10, 12}) {
    EXPECT_EQ(BuildSuppressionCurve({0, 0, code, 0, 0, 0, 0, 0, 0}, t.data()), DEIMG_UNSUPPORTED);
    EXPECT_EQ(BuildSuppressionCurve({0, 0, 0, code, 0, 0, 0, 0, 0}, t.data()), DEIMG_UNSUPPORTED);
  }
}

TEST_P(ColourKernels, ChromaSuppressLargestLevelAround) {
  const int width = 14;
  Samples r(14, 0), b(14, 0), h(14, 256 * 40);
  using Levels = std::vector<NarrowSample>;
  Levels level(14), largest(14);
  r[6] = 128 * 20;
  k->wideMosaic.suppressionLevelLine(r.data(), b.data(), h.data(), width, level.data());
  EXPECT_EQ(level, (Levels{0, 8, 8, 8, 8, 18, 28, 18, 8, 8, 8, 8, 8, 8}));
  r[13] = 256;  // counts three times at the last column
  k->wideMosaic.suppressionLevelLine(r.data(), b.data(), h.data(), width, level.data());
  EXPECT_EQ(level[13], 11);
  level = {99, 1, 0, 0, 0, 0, 9, 0, 0, 0, 5, 6, 7, 8};
  level[0] = 0;
  k->largestLevelLine(level.data(), width, largest.data());
  EXPECT_EQ(largest, (Levels{0, 1, 1, 9, 9, 9, 9, 9, 9, 9, 8, 6, 7, 8}));
  h.assign(14, -1000000);
  k->wideMosaic.suppressionLevelLine(r.data(), b.data(), h.data(), width, level.data());
  EXPECT_EQ(level, Levels(14, 0));

  const Samples in(14, -1000), curve(14, 64);
  Samples out(14);
  k->suppressLine(in.data(), curve.data(), 100, width, out.data());
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[13], 0);
  EXPECT_EQ(out[7], -390);  // -6,400,000 / 16,384
}

TEST_P(ColourKernels, ColorSystemProcSmoothsAlongTheLine) {
  const Sample black[] = {0, 0, 0};
  const Samples zero(21, 0);
  Samples in(21, 0), r(21), g(21), b(21);
  in[10] = 128;
  k->toRgbLine9(zero.data(), in.data(), zero.data(), black, 21, r.data(), g.data(), b.data());
  EXPECT_EQ(Samples(r.begin() + 5, r.begin() + 16),
            (Samples{0, 4, 7, 18, 21, 28, 21, 18, 7, 4, 0}));
  EXPECT_EQ(b, zero);
  in[10] = 64;
  k->toRgbLine7(zero.data(), zero.data(), in.data(), black, 21, r.data(), g.data(), b.data());
  EXPECT_EQ(Samples(b.begin() + 6, b.begin() + 15), (Samples{0, 3, 8, 13, 16, 13, 8, 3, 0}));
  EXPECT_EQ(r, zero);
  in = Random(21, 0, 999, 1);
  for (const auto toRgbLine : {k->toRgbLine9, k->toRgbLine7}) {
    toRgbLine(in.data(), zero.data(), zero.data(), black, 21, r.data(), g.data(), b.data());
    for (const std::size_t x : {0u, 3u, 17u, 20u}) EXPECT_EQ(r[x], in[x]);
    EXPECT_NE(r[4], in[4]);
    EXPECT_NE(r[16], in[16]);
    EXPECT_EQ(r, g);
    EXPECT_EQ(r, b);
  }
}

TEST_P(ColourKernels, ColorSystemProcRgbAndBack) {
  const Samples y = {1000, 1000, 20000}, c1 = {0, 100, 0}, c2 = {0, -2000, 0};
  const Sample black[] = {1, 0, -1};
  Samples r(3), g(3), b(3);
  k->toRgbLine9(y.data(), c1.data(), c2.data(), black, 3, r.data(), g.data(), b.data());
  EXPECT_EQ(r, (Samples{996, 1096, 8191}));
  EXPECT_EQ(g, (Samples{1000, 1323, 8191}));  // (1,024,000 - 337,700 + 113,000) / 604
  EXPECT_EQ(b, (Samples{1004, -512, 8191}));
  r = {8191, 0, 1000}, g = {-512, 8191, 1000}, b = {-512, 8191, 1000};
  k->toColourDifferencesLine(r.data(), 3, g.data(), b.data());
  EXPECT_EQ(g, (Samples{4095, -4095, 0}));  // 4351 is clipped
  EXPECT_EQ(b, (Samples{-1461, 1375, 0}));
}

TEST_P(ColourKernels, ColorSystemProcChromaGainAndHue) {
  Samples table(256);
  BuildChromaGainTable({128, 100, 40, 16, 8, 100, 4}, table.data());
  const std::pair<std::size_t, Sample> expected[] = {{12, 128}, {13, 127}, {40, 100}, {41, 99},
                                                     {100, 70}, {101, 69}, {200, 26}, {255, 2}};
  for (const auto& [i, value] : expected) EXPECT_EQ(table[i], value) << i;
  BuildChromaGainTable({128, 100, 40, 0, 8, 100, 4}, table.data());  // no slope: only entry 0
  EXPECT_EQ(table[0], 128);
  EXPECT_EQ(table[1], 100);
  BuildChromaGainTable({32767, -32768, 32767, 1, -32768, -5, 32767}, table.data());

  Samples cr = {100, -4096, 0, 100, -100, 7}, cb = {-50, 10, 31, -200, 200, 0};
  Samples gain(6);
  k->chromaLevelLine(cr.data(), cb.data(), 6, gain.data());
  EXPECT_EQ(gain, (Samples{3, 128, 0, 6, 6, 0}));
  gain = {64, 32, 64, 128, 128, 128};
  const std::int16_t none[] = {0, 0, 0, 0}, mix[] = {1, 2, 4, 8};
  k->adjustColourDifferencesLine(gain.data(), none, 6, cr.data(), cb.data());
  EXPECT_EQ(cr, (Samples{50, -1024, 0, 100, -100, 7}));
  EXPECT_EQ(cb, (Samples{-25, 2, 15, -200, 200, 0}));
  gain.assign(6, 128);
  k->adjustColourDifferencesLine(gain.data(), mix, 6, cr.data(), cb.data());
  EXPECT_EQ(Samples(cr.begin() + 3, cr.end()), (Samples{100 - 15, -100 + 12, 7}));  // 80, 64 x 200
  EXPECT_EQ(Samples(cb.begin() + 3, cb.end()), (Samples{-200 + 3, 200 - 3, 0}));    // 32, 40 x 100
}

TEST(RgbToneCurve, SevenSegments) {
  TuningBlock::Words<45> r{};
  r[7] = 100, r[9] = 64, r[14] = 12, r[15] = 32, r[20] = 20, r[22] = 8, r[23] = 1;
  r[26] = 40, r[32] = 50, r[38] = 1000, r[39] = 60;
  const std::pair<Sample, Sample> expected[] = {
      {-512, 0},   {399, 399},  {400, 384},   {401, 384},   {402, 385},   {1007, 687},
      {1008, 640}, {1136, 648}, {1919, 1045}, {1920, 1280}, {3312, 1600}, {4000, 1920}};
  for (const auto& [x, value] : expected) EXPECT_EQ(RgbToneCurve(x, r), value) << x;
  // Below zero: positive results become 0; modes, shifts and the quarter flag.
  r[0] = -128;
  r[2] = 64;
  EXPECT_EQ(RgbToneCurve(-512, r), 0);
  EXPECT_EQ(RgbToneCurve(-508, r), 0) << "a positive slope from the floor";
  r[1] = -16;
  EXPECT_EQ(RgbToneCurve(-512, r), -512);
  EXPECT_EQ(RgbToneCurve(-412, r), -412);
  r[6] = 1;
  EXPECT_EQ(RgbToneCurve(-412, r), -512 + 25);
  r[5] = 1;
  EXPECT_EQ(RgbToneCurve(-412, r), -512 + 12);
  r[24] = 1;
  EXPECT_EQ(RgbToneCurve(1919, r), 640 + (8 * 911 * 911 / 256 / 64 >> 1));
  // The last segment keeps its mode behind its shift.
  r[41] = 1;
  EXPECT_EQ(RgbToneCurve(4512, r), 1920 + 512 * 512 / 512 / 64);
  r[44] = 1;
  EXPECT_EQ(RgbToneCurve(4512, r), 1920 + 512 * 512 / 256 / 64);
}

TEST_P(ColourKernels, LastStageRgbScalesAndClips) {
  const Samples y = {8191, 0, 100, 0}, cr = {0, 0, 0, -100}, cb = {0, 0, 40, 0};
  std::vector<std::uint8_t> rgb(12), planes(12);
  k->rgbLine8(y.data(), cr.data(), cb.data(), 4, planes.data(), rgb.data());
  EXPECT_EQ(rgb, (std::vector<std::uint8_t>{255, 255, 255, 0, 0, 0, 3, 2, 5, 0, 2, 0}));
  std::vector<std::uint16_t> deep(12), deepPlanes(12);
  k->rgbLine16(y.data(), cr.data(), cb.data(), 4, deepPlanes.data(), deep.data());
  EXPECT_EQ(deep,
            (std::vector<std::uint16_t>{65535, 65535, 65535, 7, 7, 7, 807, 697, 1373, 0, 578, 7}));
}

}  // namespace
}  // namespace deimg

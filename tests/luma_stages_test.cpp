// Kernels and tables of the luminance path.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "stages/luma/a_filter_main.h"
#include "stages/luma/apc_curve.h"
#include "stages/luma/h_apc_procs.h"
#include "stages/luma/hor_lpf_for_a_filter.h"
#include "stages/luma/r_apc_procs.h"
#include "stages/luma/ramen_to_ymix.h"
#include "stages/luma/v_apc_procs.h"
#include "stages/luma/ver_lpf_for_a_filter.h"
#include "stages/luma/ymain_procs.h"
#include "support/kernel_choice.h"

namespace deimg {
namespace {

using Samples = std::vector<Sample>;

class LuminanceKernels : public testing::KernelTest {};
INSTANTIATE_TEST_SUITE_P(Levels, LuminanceKernels, ::testing::ValuesIn(kKernelLevels),
                         testing::LevelName);

TEST_P(LuminanceKernels, VerLpfKernelsBySelectorAndParity) {
  const Samples zero(2, 0), hundred(2, 100), minus(2, -7);
  const auto run = [&](const SevenLines<Sample>& lines, int selector, bool odd) {
    Samples out(2);
    k->wideMosaic.verLpfLine(lines, VerLpfTapsOf(selector).value().data(), odd, 2, out.data());
    return out;
  };
  const Sample *z = zero.data(), *h = hundred.data();
  for (const int selector : {8, 9, 10, 15, 24, 26, 28}) {
    for (const bool odd : {false, true}) {
      EXPECT_EQ(run({{h, h, h, h, h, h, h}}, selector, odd), (Samples{400, 400})) << selector;
    }
  }
  EXPECT_EQ(run({{z, z, z, h, z, z, z}}, 15, true), (Samples{650, 0}));
  EXPECT_EQ(run({{z, z, z, h, z, z, z}}, 15, false), (Samples{0, 650}));
  EXPECT_EQ(run({{h, z, z, z, h, z, z}}, 15, true), (Samples{0, 200}));
  EXPECT_EQ(run({{z, h, z, z, z, z, z}}, 15, false), (Samples{0, -125}));
  EXPECT_EQ(run({{minus.data(), z, z, z, z, z, z}}, 8, true)[1], -1) << "-7 / 4";
  EXPECT_FALSE(VerLpfTapsOf(11));
}

TEST_P(LuminanceKernels, HorLpfTapsDivisorsAndEdges) {
  const auto run = [&](const Samples& in, const Samples& taps, Sample divisor) {
    Samples out(in.size());
    k->horLpfLine(in.data(), taps.data(), static_cast<int>(taps.size()), divisor,
                  static_cast<int>(in.size()), out.data());
    return out;
  };
  EXPECT_EQ(run({0, 4, 0, 4, 0, 4}, {1, 2, 1}, 1), (Samples{0, 8, 8, 8, 8, 16}));
  EXPECT_EQ(run({-3, 0, 0, 0}, {1, 2, 1}, 4), (Samples{-3, 0, 0, 0}));
  EXPECT_EQ(run({1, 2, 4, 8}, {1, 1, 1}, 2), (Samples{1, 3, 7, 8}));
  const Samples nine = run(Samples(12, 100), {1, 2, 3, 4, 5, 4, 3, 2, 1}, 25);
  EXPECT_EQ(nine, Samples(12, 100));
  EXPECT_EQ(run({0, 0, 80, 0, 0, 0}, {1, 2, 2, 2, 1}, 8), (Samples{0, 0, 20, 20, 0, 0}));
}

/// The gain by the size of the direction measure as a table of 257 entries.
Samples PlainAFilterGains(int slopeShift, int coreLevel) {
  Samples table(257, 32);
  const int step = 256 >> slopeShift;
  const int end = (step * coreLevel / 8 + 32) * 8 / step;
  for (int i = 0; i < 256; ++i) {
    if (i < coreLevel) {
      table[static_cast<std::size_t>(i)] = 0;
    } else if (i < end) {
      table[static_cast<std::size_t>(i)] = (i - coreLevel) * step / 8;
    }
  }
  return table;
}

TEST_P(LuminanceKernels, AFilterGainAndDirection) {
  Samples sizes(300), gains(300);
  std::iota(sizes.begin(), sizes.end(), 0);
  const Samples zero(300, 0), four(300, 4);
  for (int slopeShift = 0; slopeShift <= 8; ++slopeShift) {
    for (const int coreLevel : {0, 1, 7, 16, 100, 250, 255, 256, 257, 65535}) {
      k->wideMosaic.aFilterLine(sizes.data(), zero.data(), zero.data(), four.data(),
                                MakeAFilterGain(slopeShift, coreLevel), 300, gains.data());
      const Samples expected = PlainAFilterGains(slopeShift, coreLevel);
      for (std::size_t i = 0; i < 300; ++i) {
        ASSERT_EQ(gains[i], expected[std::min<std::size_t>(i, 256)])
            << slopeShift << " " << coreLevel << " " << i;
      }
    }
  }

  const Samples direction = {0, -300, 300, 20, -20}, vertical(5, 10), both(5, 93), hokan(5, 10);
  Samples out(5);
  k->wideMosaic.aFilterLine(direction.data(), vertical.data(), both.data(), hokan.data(),
                            MakeAFilterGain(4, 16), 5, out.data());
  EXPECT_EQ(out, (Samples{0, 40 - 93, 80 - 93, -3, -13}));
}

TEST_P(LuminanceKernels, RamenToYmixDetailAndMix) {
  const Samples l = {100, 100, 100}, a = {-3, 80, -9};
  Samples mixed(3), enhanced(3);
  k->addDetailLine(l.data(), a.data(), 1, 8, 3, mixed.data(), enhanced.data());
  EXPECT_EQ(enhanced, (Samples{100, 110, 99}));
  EXPECT_EQ(mixed, (Samples{103, 30, 108}));

  Samples y(5, 1000);
  const Samples r(5, 1000), b(5, 1000);
  const std::int16_t weights[] = {77, 151, 28};
  k->wideMosaic.mixLine(r.data(), b.data(), weights, 0, 5, y.data());
  EXPECT_EQ(y, Samples(5, 2230));
  y.assign(5, 0);
  const Samples spike = {0, 0, 256, 0, 0}, none(5, 0);
  const std::int16_t redOnly[] = {1, 0, 0};
  k->wideMosaic.mixLine(spike.data(), none.data(), redOnly, 8 * -3, 5, y.data());
  EXPECT_EQ(y, (Samples{24, 25, 26, 25, 24}));
  y = {0, 0};
  const std::int16_t redAndBlue[] = {1, 0, 64};
  k->wideMosaic.mixLine(spike.data() + 1, spike.data() + 2, redAndBlue, 0, 2, y.data());
  EXPECT_EQ(y, (Samples{256, 4})) << "a line of two samples has edges only";
}

/// The curve stated as the table it stands for.
std::vector<std::int16_t> PlainCurve(const ApcCurveParams& params, int size) {
  constexpr double kSlopes[] = {0.375, 0.5, 0.625, 0.0, 0.75, 1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};
  std::vector<std::int16_t> table(static_cast<std::size_t>(size));
  const auto fill = [&](int first, int last, int code, double divisor, int offset) {
    const double slope = code >= 0 && code < 12 ? kSlopes[code] / divisor : 0.0;
    for (int i = std::max(first, 0); i <= std::min(last, size - 1); ++i) {
      const auto value = static_cast<std::int16_t>(static_cast<int>((i * slope + offset) * 8));
      table[static_cast<std::size_t>(i)] = std::max<std::int16_t>(value, 0);
    }
  };
  fill(0, params[0] * 4, params[2], 4, params[5]);
  fill(params[0] * 4, params[1] * 4, params[3], 4, params[6]);
  fill(params[1] * 4, size - 1, params[4], 2048, params[7]);
  return table;
}

TEST_P(LuminanceKernels, ApcCurve) {
  const ApcCurveParams example = {2, 10, 5, 9, 5, -2, -10, 4};
  const std::vector<std::int16_t> t = PlainCurve(example, 8192);
  EXPECT_EQ(t[20], 0);
  EXPECT_EQ(t[21], 4);
  EXPECT_EQ(t[39], 76);
  EXPECT_EQ(t[40], 32) << "the last segment takes the shared entry";
  EXPECT_EQ(t[8191], 63);
  const Samples in = {-33 * 16, 33 * 16 + 15, 15, 300000000, -300000000, INT32_MIN, -15};
  Samples out(7);
  k->apcCurveLine(in.data(), MakeApcCurve(example, 8192, 4), 7, out.data());
  EXPECT_EQ(out, (Samples{-t[33], t[33], t[0], 63, -63, -63, t[0]}));

  std::mt19937 random(7);
  for (int n = 0; n < 300; ++n) {
    ApcCurveParams params;
    for (std::int16_t& p : params) p = static_cast<std::int16_t>(random());
    if (n % 4 != 0) {  // a curve that fits in 16 bits
      for (std::size_t i = 5; i < 8; ++i) params[i] = static_cast<std::int16_t>(random() % 2000);
    }
    if (n % 2 == 0) params[0] = static_cast<std::int16_t>(random() % 600);
    if (n % 3 == 0) params[1] = static_cast<std::int16_t>(random() % 3000);
    for (std::size_t i = 2; i < 5; ++i) params[i] = static_cast<std::int16_t>(random() % 13);
    const int size = n % 5 == 0 ? 16384 : 8192;
    const std::vector<std::int16_t> table = PlainCurve(params, size);
    Samples line(table.size());
    std::iota(line.begin(), line.end(), 0);
    Samples values(table.size());
    k->apcCurveLine(line.data(), MakeApcCurve(params, size, 0), size, values.data());
    ASSERT_EQ(values, Samples(table.begin(), table.end())) << n;
  }
}

/// A curve that leaves magnitudes below 8192 as they are.
constexpr ApcSegments kIdentity = {.shift = 0,
                                   .knee1 = 0,
                                   .knee2 = 0,
                                   .last = 8191,
                                   .slope = {0, 0, 2048},
                                   .offset = {0, 0, 0},
                                   .overflows = false};

TEST_P(LuminanceKernels, HApcHighPasses) {
  Samples in(9, 0), out(9, 5);
  in[4] = 400;
  k->narrowHighPassLine(in.data(), kIdentity, 9, out.data());
  EXPECT_EQ(out, (Samples{0, 0, -100, 0, 200, 0, -100, 0, 0}));
  k->wideHighPassLine(in.data(), kIdentity, 9, out.data());
  EXPECT_EQ(out, (Samples{0, 0, 0, -25, 200, -25, 0, 0, 0}));
}

TEST_P(LuminanceKernels, VApcHighPassesAndSmoothing) {
  const Samples zero(13, 0), hundred(13, 100);
  const Sample *z = zero.data(), *h = hundred.data();
  Samples out(13);
  k->wideMosaic.verticalHighPass3Line(z, h, z, 13, out.data());
  EXPECT_EQ(out[0], 100);
  k->wideMosaic.verticalHighPass7Line({{z, z, z, h, z, z, z}}, 13, out.data());
  EXPECT_EQ(out[5], 100);
  k->wideMosaic.verticalHighPass7Line({{z, z, z, z, z, h, z}}, 13, out.data());
  EXPECT_EQ(out[12], -50);
  k->wideMosaic.verticalHighPass7Line({{z, z, h, z, z, z, h}}, 13, out.data());
  EXPECT_EQ(out[12], 0);
  Samples in(13, 0);
  in[6] = 160;
  in[0] = in[12] = 7;
  k->smoothDetailLine(in.data(), kIdentity, 13, out.data());
  EXPECT_EQ(out, (Samples{7, 0, 0, 0, 10, 40, 60, 40, 10, 0, 0, 0, 7}));
}

TEST_P(LuminanceKernels, RApcSmoothingHasAGainOf16) {
  const Samples line(8, 100);
  const Sample* const l = line.data();
  const SevenLines<Sample> in = {{l, l, l, l, l, l, l}};
  Samples v(8), p0(8), p1(8), p2(8);
  k->wideMosaic.verticalSmooth5Line(in, 8, v.data());
  EXPECT_EQ(v, Samples(8, 400));
  k->horizontalSmooth5Line(v.data(), 6, 1, 1, 8, p0.data());
  EXPECT_EQ(p0, (Samples{400, 400, 1600, 1600, 1600, 1600, 400, 400}));
  k->horizontalSmooth5Line(v.data(), 10, -1, 4, 8, p1.data());
  EXPECT_EQ(p1, Samples(8, 1600));
  const Sample taps[] = {28, 17, 2, -1};
  k->wideMosaic.verticalSmooth7Line(in, taps, 8, v.data());
  EXPECT_EQ(v, Samples(8, 400));
  k->wideMosaic.sharpenLine(in, p0.data(), p1.data(), 3, kIdentity, 8, p2.data());
  EXPECT_EQ(p2, (Samples{750, 750, 0, 0, 0, 0, 750, 750}));  // 1200 - 150 x 3

  const Samples ones(4, 1);
  Samples out(4);
  k->horizontalSmooth121Line(ones.data(), 4, out.data());
  EXPECT_EQ(out, (Samples{4, 4, 4, 10})) << "the last column adds its new neighbour";
}

/// The detail gain by level, in real numbers.
std::vector<int> PlainDetailGains(const DetailGainParams& params) {
  constexpr double kRise[] = {0.0, 4.0, 2.0, 1.0};
  constexpr double kFall[] = {0.0, -1.0, -0.5, -0.25};
  constexpr int kEnd[] = {1024, 800, 832, 864, 896, 928, 960, 992};
  const double peak = params.peak, rise = kRise[params.riseCode], fall = kFall[params.fallCode];
  const int end = kEnd[params.endCode];
  const int x1 = rise != 0 ? static_cast<int>(peak / rise) : 0;
  const double intercept = -(end * fall);
  const int x2 = fall != 0 ? static_cast<int>((peak - intercept) / fall) : 1023;
  std::vector<int> table;
  for (int i = 0; i < 1024; ++i) {
    const double gain = i < x1 ? i * rise : i < x2 ? peak : i < end ? i * fall + intercept : 0.0;
    table.push_back(static_cast<std::uint16_t>(static_cast<int>(gain * 16)));
  }
  return table;
}

TEST_P(LuminanceKernels, YMainDetailGain) {
  const auto gains = [&](const DetailGainParams& params) {
    DetailGain gain{};
    EXPECT_EQ(MakeDetailGain(params, gain), DEIMG_OK);
    const Samples zero(8, 0), detail(8, 1024);
    std::vector<int> values;
    for (Sample level = 0; level < 1024; ++level) {
      const Samples y(8, 64 * level);
      Samples out(8);
      k->addDetailsLine(y.data(),
                        {detail.data(), zero.data(), zero.data(), zero.data(), zero.data()}, gain,
                        8, out.data());
      EXPECT_EQ(out[0], out[4]);
      values.push_back(out[4] - 8 * level);
    }
    return values;
  };
  const auto t = PlainDetailGains({3, 2, 0, 32});
  EXPECT_EQ(t[31], 31 * 16);
  EXPECT_EQ(t[1000], 192);
  EXPECT_EQ(t[1023], 8);
  std::mt19937 random(3);
  for (int n = 0; n < 60; ++n) {
    DetailGainParams params{
        static_cast<std::uint16_t>(random() % 4), static_cast<std::uint16_t>(random() % 4),
        static_cast<std::uint16_t>(random() % 8), static_cast<std::int16_t>(random())};
    if (n % 2 == 0) params.peak = static_cast<std::int16_t>(random() % 300);
    const auto expected = PlainDetailGains(params);
    const auto actual = gains(params);
    for (int i = 0; i < 1024; ++i) {
      const auto at = static_cast<std::size_t>(i);
      ASSERT_EQ(actual[at], std::min(expected[at], 8191 - 8 * i)) << n << " " << i;
    }
  }
}

TEST(YMain, DetailCodes) {
  DetailGain gain{};
  EXPECT_EQ(MakeDetailGain({4, 0, 0, 1}, gain), DEIMG_UNSUPPORTED);
  EXPECT_EQ(MakeDetailGain({0, 4, 0, 1}, gain), DEIMG_UNSUPPORTED);
  EXPECT_EQ(MakeDetailGain({0, 0, 8, 1}, gain), DEIMG_UNSUPPORTED);
  const Sample scales[3][4] = {{0, 128, 256, -1}, {64, 192, 320, 576}, {512, 640, 768, -1}};
  for (const int a : {-1, 0, 1, 2}) {
    for (int b = 0; b < 5; ++b) {
      Sample scale = -1;
      const Sample expected = b == 4 ? -1 : scales[a == 0 || a == 1 ? a : 2][b];
      EXPECT_EQ(NegativeScale(static_cast<std::int16_t>(a), static_cast<std::int16_t>(b), scale),
                expected < 0 ? Result{DEIMG_UNSUPPORTED} : Result{DEIMG_OK});
      EXPECT_EQ(scale, expected);
    }
  }
}

TEST_P(LuminanceKernels, YMainDetailsByLevel) {
  const Samples y(12, 6400), zero(12, 0), minus(12, -100);
  // A gain of 1 up to level 100, 0 beyond it.
  DetailGain gain{.rise = 0,
                  .riseEnd = 0,
                  .hold = 128,
                  .holdEnd = 101,
                  .fall = 0,
                  .end = 1024,
                  .negativeScale = 0};
  Samples out(12);
  const auto add = [&](const Samples& detail, Sample scale) {
    gain.negativeScale = scale;
    k->addDetailsLine(y.data(), {zero.data(), zero.data(), detail.data(), zero.data(), zero.data()},
                      gain, 12, out.data());
    return out;
  };
  EXPECT_EQ(add(minus, 512), Samples(12, (6400 - 50) / 8));
  EXPECT_EQ(add(minus, 0), Samples(12, 800));
  EXPECT_EQ(add(Samples(12, 100000), 0), Samples(12, 8191));
  // Three single-sample levels at the end of the line, two at its start.
  Samples step(12, 0);
  step[8] = 64 * 101;
  const Samples detail(12, 80);
  k->addDetailsLine(step.data(),
                    {detail.data(), zero.data(), zero.data(), zero.data(), zero.data()}, gain, 12,
                    out.data());
  EXPECT_EQ(out[8], 818) << "the level of column 8 is an average";
  step = Samples(12, 0);
  step[9] = 64 * 101;
  k->addDetailsLine(step.data(),
                    {detail.data(), zero.data(), zero.data(), zero.data(), zero.data()}, gain, 12,
                    out.data());
  EXPECT_EQ(out[9], 808) << "that of column 9 is its own";

  const Samples limits = {8191 * 8 + 7, -5, 8192 * 8};
  k->scaleLuminanceLine(limits.data(), 3, out.data());
  EXPECT_EQ(Samples(out.begin(), out.begin() + 3), (Samples{8191, 0, 8191}));
}

TEST(YMain, ToneCurveSegments) {
  TuningBlock::Words<32> c{};
  std::iota(c.begin(), c.end(), std::int16_t{0});
  c[0] = 10, c[1] = 1, c[2] = 64, c[3] = 0, c[4] = 0, c[5] = 0;
  c[6] = 5, c[7] = 0, c[8] = 512, c[9] = 2, c[10] = 1;
  c[11] = 7, c[16] = 9, c[21] = 11, c[26] = 1000, c[27] = 300, c[28] = c[29] = 0;
  EXPECT_EQ(LuminanceToneCurve(39, c), 39 + 32);
  EXPECT_EQ(LuminanceToneCurve(40, c), 160);
  EXPECT_EQ(LuminanceToneCurve(360, c), 160 + (320 * 320 / 64 >> 2 >> 2));
  EXPECT_EQ(LuminanceToneCurve(1008, c), 7 * 32);
  EXPECT_EQ(LuminanceToneCurve(1920, c), 9 * 32);
  EXPECT_EQ(LuminanceToneCurve(3312, c), 11 * 32);
  EXPECT_EQ(LuminanceToneCurve(4000, c), 8191);
  c[26] = 0;
  EXPECT_EQ(LuminanceToneCurve(3312, c), 8191) << "the last segment begins before the fifth";
}

TEST_P(LuminanceKernels, YMainCorrectionByColourDifference) {
  ChromaCorrection correction = ChromaCorrectionOf({4, 1, 2, 0, 1, 3, 0});
  EXPECT_EQ(correction.threshold, 128);
  EXPECT_EQ(correction.gainCb, 64 >> 2);
  EXPECT_EQ(correction.gainCr, -(48 >> 3));
  EXPECT_EQ(ChromaCorrectionOf({0, 0, 0, 0, 1, 0, 0}).threshold, 0);
  EXPECT_EQ(ChromaCorrectionOf({0, 0, 0, 0, 1, 0, 0}).gainCb, 0);
  EXPECT_EQ(ChromaCorrectionOf({0, 3, 0, 4, 0, 1, 0}).gainCb, 32);
  EXPECT_EQ(ChromaCorrectionOf({0, 3, 0, 4, 0, 1, 0}).gainCr, 0) << "a count of -1 is 31";

  correction = {100, 16, 32};
  const Samples cr = {100, 116, -500, 4095}, cb = {0, 108, 0, 4095};
  Samples y = {50, 50, 50, 50};
  k->correctByChromaLine(cr.data(), cb.data(), correction, 4, y.data());
  EXPECT_EQ(y, (Samples{50, (100 - 32 + 1) / 2, 50, 0}));
}

}  // namespace
}  // namespace deimg

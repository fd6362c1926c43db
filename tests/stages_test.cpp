// Every stage against a plain statement of what it computes, at every instruction level, with
// narrow and wide samples, random lines, and random legal and hostile tuning.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <map>

#include "stages/colour/chroma_gain_curve.h"
#include "stages/colour/suppression_curve.h"
#include "support/level_choice.h"
#include "support/stage_bench.h"

namespace deimg {
namespace {

using testing::Samples;
using testing::StageBench;

Sample Clip(Sample v, Sample low, Sample high) { return std::clamp(v, low, high); }
Sample Magnitude(Sample v) { return v < 0 ? -v : v; }
Sample Cut16(double v) { return static_cast<std::int16_t>(static_cast<int>(v)); }

/// The tone curve of a record, word by word: rows of start, base, a, b, mode, shift, quarter.
Sample PlainSegment(Sample v, Sample start, Sample base, Sample a, Sample b, Sample divisor,
                    Sample shift, Sample quarter, bool floored) {
  const Sample d = v - 4 * start;
  const Sample q = d * (b * d) / divisor + a * d;
  Sample s = floored ? q >> 6 : q / 64;
  if (quarter == 1) s >>= 2;
  if (shift >= 1 && shift <= 3) s >>= shift;
  return s + 32 * base;
}

Sample PlainRgbTone(Sample x, const RgbToneTuning& record) {
  const auto r = std::bit_cast<std::array<std::int16_t, 45>>(record);
  const Sample v = std::max(x, 4 * r[0]);
  const auto at = [&](Sample start, std::size_t i) {
    return PlainSegment(v, start, r[i], r[i + 1], r[i + 2], r[i + 3] == 1 ? 256 : 512, r[i + 4],
                        r[i + 5], false);
  };
  if (v < 0) return at(r[0], 1) >= 1 ? 0 : static_cast<std::int16_t>(at(r[0], 1));
  Sample out = 0;
  if (v < 4 * r[7]) {
    out = at(0, 8);
  } else if (v < 1008) {
    out = at(r[7], 14);
  } else if (v < 1920) {
    out = at(252, 20);
  } else if (v < 3312) {
    out = at(480, 26);
  } else if (v < 4 * r[38]) {
    out = at(828, 32);
  } else {
    out = PlainSegment(v, r[38], r[39], r[40], r[41], r[44] == 1 ? 256 : 512, r[42], r[43], false);
  }
  return static_cast<std::int16_t>(out);
}

Sample PlainLuminanceTone(Sample i, const LuminanceToneTuning& record) {
  const auto c = std::bit_cast<std::array<std::int16_t, 32>>(record);
  const auto at = [&](Sample start, std::size_t k) {
    return Clip(PlainSegment(i, start, c[k], c[k + 1], c[k + 2], 512, c[k + 3], c[k + 4], true), 0,
                8191);
  };
  if (i < 4 * c[0]) return at(0, 1);
  if (i < 1008) return at(c[0], 6);
  if (i < 1920) return at(252, 11);
  if (i < 3312) return at(480, 16);
  return i < 4 * c[26] ? at(828, 21) : at(c[26], 27);
}

/// The aperture curve as the table it stands for, applied to a sample divided by `divisor`.
class PlainApcCurve {
 public:
  PlainApcCurve(const ApcCurveParams& record, int size)
      : table_(static_cast<std::size_t>(size)), last_(size - 1) {
    constexpr double kSlopes[] = {0.375, 0.5, 0.625, 0.0, 0.75, 1.0,
                                  1.25,  1.5, 1.75,  2.0, 2.5,  3.0};
    const auto p = std::bit_cast<std::array<std::int16_t, 8>>(record);
    const auto fill = [&](int first, int last, int code, double divisor, int offset) {
      const double slope = code >= 0 && code < 12 ? kSlopes[code] / divisor : 0.0;
      for (int i = std::max(first, 0); i <= std::min(last, last_); ++i) {
        table_[static_cast<std::size_t>(i)] = std::max(Cut16((i * slope + offset) * 8), 0);
      }
    };
    fill(0, p[0] * 4, p[2], 4, p[5]);
    fill(p[0] * 4, p[1] * 4, p[3], 4, p[6]);
    fill(p[1] * 4, last_, p[4], 2048, p[7]);
  }
  Sample operator()(Sample v) const {
    const Sample i = Clip(v, -last_, last_);
    return i >= 0 ? table_[static_cast<std::size_t>(i)] : -table_[static_cast<std::size_t>(-i)];
  }

 private:
  Samples table_;
  int last_;
};

/// What a stage's current line holds, stated plainly. The inputs are read from the bench.
class Plain {
 public:
  Plain(const StageBench& bench, const ComponentX& stage, const std::vector<Samples>& held)
      : b_(bench), stage_(stage), out_(held), n_(bench.geometry.sensorWidth) {}

  std::vector<Samples> Lines() {
    static const std::map<TypeId, void (Plain::*)()> kStatements = {
        {TypeId::kWhiteBalance, &Plain::WhiteBalance},
        {TypeId::kVHDiff, &Plain::VHDiff},
        {TypeId::kHokanVH, &Plain::HokanVH},
        {TypeId::kHokanCircuit, &Plain::HokanCircuit},
        {TypeId::kMedianCrCb, &Plain::MedianCrCb},
        {TypeId::kMatrix4x3, &Plain::Matrix},
        {TypeId::kChromaSuppress, &Plain::ChromaSuppress},
        {TypeId::kColorSystemProc, &Plain::ColorSystem},
        {TypeId::kVerLpfForAFilter, &Plain::VerLpf},
        {TypeId::kHorLpfForAFilter, &Plain::HorLpf},
        {TypeId::kAFilterHokanLpf, &Plain::HokanLpf},
        {TypeId::kAFilterMain, &Plain::AFilter},
        {TypeId::kRamenToYmix, &Plain::Ramen},
        {TypeId::kYMainProcs, &Plain::YMain},
        {TypeId::kHApcProcs, &Plain::HApc},
        {TypeId::kRApcProcs, &Plain::RApc},
        {TypeId::kVApcProcs, &Plain::VApc},
        {TypeId::kAApcProcs, &Plain::AApc},
        {TypeId::kLastStageRgb, &Plain::LastStage},
    };
    (this->*kStatements.at(stage_.typeId()))();
    return out_;
  }

 private:
  Samples In(TypeId type, int port, int offset = 0) const {
    return b_.Line(b_.Find(type), port, offset);
  }
  template <typename Value>
  void Put(std::size_t port, Value value) {
    for (int x = 0; x < n_; ++x) out_[port][static_cast<std::size_t>(x)] = value(x);
  }
  static Sample At(const Samples& line, int x) { return line[static_cast<std::size_t>(x)]; }
  bool odd() const { return (stage_.currentLine() & 1) != 0; }
  const FilterTuning& filters() const { return b_.tuning.filters[b_.settings.setIndex]; }
  const DetailTuning& details() const { return b_.tuning.details[b_.settings.setIndex]; }
  bool skipped() const { return b_.settings.matrixSelect == 1 || b_.settings.processingSet == 3; }

  void WhiteBalance() {
    const Samples raw = In(TypeId::kSourceStreamReader, 0);
    const int e = b_.settings.exposureAdjust;
    const auto& gains = b_.settings.wbGains;
    const double factor = static_cast<float>(std::pow(2.0, e / 10.0));
    Sample clip = 4095;
    if (e < 0) {
      const double level = 4096.0 * factor * ((gains[1] + gains[2]) / 2) / 1024.0;
      clip = static_cast<Sample>(std::min(level, 4095.0));
    }
    Put(0, [&](int x) {
      Sample s = At(raw, x);
      if (e != 0) s = std::min(static_cast<int>(std::min(s, 4095) * factor), 4095);
      const Sample gain = gains[(odd() ? 2u : 0u) + static_cast<unsigned>(x) % 2];
      return std::min(s * gain / 1024 + 128, clip);
    });
  }

  void VHDiff() {
    std::array<Samples, 5> m;
    for (int o = -2; o <= 2; ++o)
      m[static_cast<std::size_t>(o + 2)] = In(TypeId::kWhiteBalance, 0, o);
    Put(0, [&](int x) {
      if (x < 2 || x >= n_ - 2) return 0;
      const Sample h = Magnitude(2 * At(m[2], x) - At(m[2], x - 2) - At(m[2], x + 2)) +
                       Magnitude(At(m[2], x - 1) - At(m[2], x + 1));
      const Sample v = Magnitude(2 * At(m[2], x) - At(m[0], x) - At(m[4], x)) +
                       Magnitude(At(m[1], x) - At(m[3], x));
      return v - h;
    });
  }

  /// Red, Gr, Gb, blue: down the columns first, then along the line.
  std::array<Samples, 4> Planes() const {
    const Samples a = In(TypeId::kWhiteBalance, 0, -1), m = In(TypeId::kWhiteBalance, 0),
                  c = In(TypeId::kWhiteBalance, 0, 1);
    std::array<Samples, 4> planes;
    for (std::size_t p = 0; p < 4; ++p) {
      const bool ownLine = (p >= 2) == odd();  // red and Gr lie on even lines
      const int column = p % 2 == 0 ? 0 : 1;   // red and Gb on even columns
      const auto down = [&](int x) { return ownLine ? 2 * At(m, x) : At(a, x) + At(c, x); };
      for (int x = 0; x < n_; ++x) {
        const int left = x == 0 ? column : x - 1, right = x == n_ - 1 ? n_ - 2 + column : x + 1;
        planes[p].push_back(x % 2 == column ? 2 * down(x)
                            : x == 0        ? 2 * down(right)
                            : x == n_ - 1   ? 2 * down(left)
                                            : down(left) + down(right));
      }
    }
    return planes;
  }

  void HokanVH() {
    const auto planes = Planes();
    const Samples d = In(TypeId::kVHDiff, 0);
    const auto exchanged = [&](int x) { return At(d, x) < -Sample{filters().directionThreshold}; };
    Put(0, [&](int x) { return At(planes[0], x); });
    Put(1, [&](int x) { return At(planes[exchanged(x) ? 2 : 1], x); });
    Put(2, [&](int x) { return At(planes[exchanged(x) ? 1 : 2], x); });
    Put(3, [&](int x) { return At(planes[3], x); });
  }

  void HokanCircuit() {
    if (b_.settings.chromaMedian == -1) return;
    const auto planes = Planes();
    const Samples d = In(TypeId::kVHDiff, 0);
    for (const std::size_t p : {0u, 3u}) {
      Put(p, [&](int x) {
        const Sample gr = At(planes[1], x), gb = At(planes[2], x), average = (gr + gb) / 2;
        const bool exchange =
            b_.tuning.greenChoiceEnable != 0 && At(d, x) < -Sample{filters().directionThreshold};
        const Sample red = At(planes[0], x), blue = At(planes[3], x);
        const Sample dirR = red - (exchange ? gb : gr), dirB = blue - (exchange ? gr : gb);
        const bool useAverage = Magnitude(dirR) + Magnitude(dirB) >
                                Magnitude(red - average) + Magnitude(blue - average);
        return p == 0 ? (useAverage ? red - average : dirR) : (useAverage ? blue - average : dirB);
      });
    }
    for (const std::size_t p : {1u, 2u}) Put(p, [&](int x) { return At(planes[p], x); });
  }

  void MedianCrCb() {
    if (b_.settings.chromaMedian == -1) return;
    for (const std::size_t p : {0u, 1u}) {
      std::array<Samples, 3> lines;
      for (int o = -1; o <= 1; ++o) {
        lines[static_cast<std::size_t>(o + 1)] = In(TypeId::kHokanCircuit, p == 0 ? 0 : 3, o);
      }
      Put(p, [&](int x) {
        if (x < 2 || x >= n_ - 2) return At(lines[1], x);
        Samples all;
        for (const Samples& line : lines) {
          for (int c = x - 2; c <= x + 2; ++c) all.push_back(At(line, c));
        }
        std::sort(all.begin(), all.end());
        return all[7];
      });
    }
  }

  void Matrix() {
    constexpr std::array<std::int16_t, 12> kBuiltIn = {717, -717, -113, 113, 307, 205,
                                                       113, 399,  -307, 307, 911, -911};
    const auto& m = b_.settings.matrixSelect == 1 ? kBuiltIn : b_.tables.colourMatrix;
    const Samples r = In(TypeId::kHokanVH, 0), gr = In(TypeId::kHokanVH, 1),
                  gb = In(TypeId::kHokanVH, 2), b = In(TypeId::kHokanVH, 3);
    const Samples cr = In(TypeId::kMedianCrCb, 0), cb = In(TypeId::kMedianCrCb, 1);
    for (const std::size_t port : {0u, 1u, 2u}) {
      const std::size_t row = port == 0 ? 4 : port == 1 ? 0 : 8;
      Put(port, [&](int x) {
        if (port != 0 && b_.settings.chromaMedian != -1) {
          return (At(cr, x) * m[row] + At(cb, x) * m[row + 2]) / 2048;
        }
        return (At(r, x) * m[row] + At(gr, x) * m[row + 1] + At(b, x) * m[row + 2] +
                At(gb, x) * m[row + 3]) /
               2048;
      });
    }
  }

  void ChromaSuppress() {
    Samples curve(1024);
    SuppressionSegments segments;
    ASSERT_EQ(BuildSuppressionCurve(b_.tuning.chromaSuppression[b_.settings.isoClass], curve.data(),
                                    segments),
              DEIMG_OK);
    const Samples r = In(TypeId::kHokanVH, 0), b = In(TypeId::kHokanVH, 3),
                  h = In(TypeId::kHorLpfForAFilter, 0);
    const auto level = [&](int x) {
      if (x < 1) return 0;
      const int right = std::min(x + 1, n_ - 1);
      const Sample sum = At(r, x - 1) + 2 * At(r, x) + At(r, right) + At(h, x) +
                         2 * (At(b, x - 1) + 2 * At(b, x) + At(b, right));
      return Clip(sum / 256 - 32, 0, 1023);
    };
    const bool plain = b_.settings.matrixSelect == 1;
    for (const std::size_t p : {0u, 1u}) {
      const Samples in = In(TypeId::kMatrix4x3, static_cast<int>(p) + 1);
      const Sample gain = plain ? 128 : p == 0 ? b_.tables.chromaGainCr : b_.tables.chromaGainCb;
      Put(p, [&](int x) {
        if (x == 0 || x == n_ - 1) return 0;
        Sample m = level(x);
        for (int c = x - 3; x <= n_ - 4 && c <= x + 3; ++c) m = std::max(m, level(c));
        return At(in, x) * At(curve, m) * gain / 16384;
      });
    }
  }

  void ColorSystem() {
    const auto smooth = [&](const Samples& in, int x) {
      if (x < 4 || x >= n_ - 4) return At(in, x);
      const auto pair = [&](int k) { return At(in, x - k) + At(in, x + k); };
      return b_.tuning.smoothSelect == 0
                 ? (28 * At(in, x) + 21 * pair(1) + 18 * pair(2) + 7 * pair(3) + 4 * pair(4)) / 128
                 : (16 * At(in, x) + 13 * pair(1) + 8 * pair(2) + 3 * pair(3)) / 64;
    };
    const Samples y = In(TypeId::kMatrix4x3, 0), c1 = In(TypeId::kChromaSuppress, 0),
                  c2 = In(TypeId::kChromaSuppress, 1);
    const bool full = b_.settings.matrixSelect == 0;
    const auto& t = b_.tuning;
    Samples gains(256);
    BuildChromaGainTable(b_.tables.colourGains, gains.data());
    const auto tone = [&](Sample v, Sample black) {
      v = Clip(v - 4 * black, -512, 8191);
      return full ? PlainRgbTone(v, t.rgbTone[*b_.settings.toneIndex][b_.settings.isoClass]) : v;
    };
    const auto& h = b_.tables.colourOffsets;
    for (int x = 0; x < n_; ++x) {
      const Sample l = smooth(y, x);
      Sample r = l + smooth(c1, x), b = l + smooth(c2, x);
      Sample g = (1024 * l - 307 * r - 113 * b) / 604;
      r = tone(r, t.blackR);
      g = tone(g, t.blackG);
      b = tone(b, t.blackB);
      Sample cr = Clip((512 * r - 429 * g - 83 * b) / 1024, -4096, 4095);
      Sample cb = Clip(8 * (-172 * r - 340 * g + 512 * b) / 8192, -4096, 4095);
      if (full) {
        const Sample gain = At(gains, std::max(Magnitude(cr), Magnitude(cb)) / 32);
        const Sample red = cr * gain / 128, blue = cb * gain / 128;
        cr = red + ((blue < 0 ? 8 * h[1] : 0) + 8 * h[3]) * blue / 1024;
        cb = blue + ((red < 0 ? 8 * h[0] : 0) + 8 * h[2]) * red / 1024;
      }
      const auto at = static_cast<std::size_t>(x);
      out_[0][at] = r;
      out_[1][at] = cr;
      out_[2][at] = cb;
    }
  }

  void VerLpf() {
    constexpr int kKernels[][5] = {{8, 1, -2, 7, 20},  {9, 2, -2, 6, 20},  {10, 1, -4, 7, 24},
                                   {15, 2, -5, 6, 26}, {24, 0, -2, 8, 20}, {26, 0, -4, 8, 24},
                                   {28, 0, 0, 8, 16}};
    const int* t =
        std::find_if(std::begin(kKernels), std::end(kKernels),
                     [&](const int* k) { return k[0] == filters().verLpfKernelSelect; })[0] +
        1;
    std::array<Samples, 7> l;
    for (int o = -3; o <= 3; ++o)
      l[static_cast<std::size_t>(o + 3)] = In(TypeId::kWhiteBalance, 0, o);
    Put(0, [&](int x) {
      const bool green = (x + (odd() ? 1 : 0)) % 2 != 0;
      return (green ? t[3] * At(l[3], x) + t[1] * (At(l[1], x) + At(l[5], x))
                    : t[2] * (At(l[2], x) + At(l[4], x)) + t[0] * (At(l[0], x) + At(l[6], x))) /
             4;
    });
  }

  void HorLpf() {
    const Samples in = In(TypeId::kVerLpfForAFilter, 0);
    Put(0, [&](int x) {
      if (x == 0 || x == n_ - 1) return 4 * At(in, x);
      return At(in, x - 1) + 2 * At(in, x) + At(in, x + 1);
    });
  }

  void HokanLpf() {
    const Samples in = In(TypeId::kWhiteBalance, 0);
    Put(0, [&](int x) {
      if ((x + (odd() ? 1 : 0)) % 2 != 0) return 2 * At(in, x);
      if (x == 0) return 2 * At(in, 1);
      return x == n_ - 1 ? 2 * At(in, n_ - 2) : At(in, x - 1) + At(in, x + 1);
    });
  }

  void AFilter() {
    const Samples d = In(TypeId::kVHDiff, 0), v = In(TypeId::kVerLpfForAFilter, 0),
                  both = In(TypeId::kHorLpfForAFilter, 0), h = In(TypeId::kAFilterHokanLpf, 0);
    const int core = filters().aFilterCoreLevel, step = 256 >> filters().aFilterSlopeShift;
    const int end = (step * core / 8 + 32) * 8 / step;
    Put(0, [&](int x) {
      const Sample size = Magnitude(At(d, x));
      const Sample gain = size > 255    ? 32
                          : size < core ? 0
                          : size < end  ? (size - core) * step / 8
                                        : 32;
      const Sample smoothed = At(d, x) < 0 ? 4 * At(v, x) : 8 * At(h, x);
      return (smoothed - At(both, x)) * gain / 32;
    });
  }

  void Ramen() {
    const Samples l = In(TypeId::kHorLpfForAFilter, 0), a = In(TypeId::kAFilterMain, 0),
                  r = In(TypeId::kHokanVH, 0), b = In(TypeId::kHokanVH, 3);
    const auto& w = b_.tables.luminanceWeights;
    Put(1, [&](int x) { return At(l, x) + At(a, x) * Sample{filters().detailGainLow} / 8; });
    Put(0, [&](int x) {
      const auto smooth = [&](const Samples& in) {
        if (x == 0 || x == n_ - 1) return 4 * At(in, x);
        return At(in, x - 1) + 2 * At(in, x) + At(in, x + 1);
      };
      const Sample y = At(out_[1], x) - At(a, x) * Sample{filters().detailGainMix} / 8;
      return (y * w[1] + smooth(r) * w[0] + smooth(b) * w[2]) / 256 -
             8 * (b_.tuning.luminancePedestal / 2);
    });
  }

  /// The detail gain by level, in real numbers, and the scale of negative detail.
  std::pair<Samples, Sample> DetailGains() const {
    constexpr double kRise[] = {0.0, 4.0, 2.0, 1.0};
    constexpr double kFall[] = {0.0, -1.0, -0.5, -0.25};
    constexpr int kEnd[] = {1024, 800, 832, 864, 896, 928, 960, 992};
    constexpr Sample kScales[3][4] = {{0, 128, 256, -1}, {64, 192, 320, 576}, {512, 640, 768, -1}};
    const DetailGainTuning& g = details().gain;
    const double peak = g.peak[b_.settings.isoClass];
    const double rise = kRise[g.riseCode], fall = kFall[g.fallCode];
    const int end = kEnd[g.endCode];
    const double intercept = -(end * fall);
    const int x1 = rise != 0 ? static_cast<int>(peak / rise) : 0;
    const int x2 = fall != 0 ? static_cast<int>((peak - intercept) / fall) : 1023;
    Samples table;
    for (int i = 0; i < 1024; ++i) {
      const double gain = i < x1 ? i * rise : i < x2 ? peak : i < end ? i * fall + intercept : 0.0;
      table.push_back(static_cast<std::uint16_t>(static_cast<int>(gain * 16)));
    }
    const int mode = g.negativeModeA == 0 || g.negativeModeA == 1 ? g.negativeModeA : 2;
    return {table, kScales[mode][g.negativeModeB]};
  }

  void YMain() {
    const Samples y = In(TypeId::kRamenToYmix, 0);
    const std::array<Samples, 5> parts = {In(TypeId::kHApcProcs, 0), In(TypeId::kHApcProcs, 1),
                                          In(TypeId::kRApcProcs, 0), In(TypeId::kVApcProcs, 0),
                                          In(TypeId::kAApcProcs, 0)};
    const Samples cr = In(TypeId::kColorSystemProc, 1), cb = In(TypeId::kColorSystemProc, 2);
    const bool full = b_.settings.matrixSelect == 0;
    const auto detail = DetailGains();
    const Samples& gains = detail.first;
    const Sample negative = detail.second;
    const auto p = std::bit_cast<std::array<std::uint16_t, 7>>(
        b_.tuning.chromaCorrection[*b_.settings.toneIndex]);
    const auto shifted = [](Sample factor, Sample shift) {
      return factor == 0 && shift == 0 ? 0 : (8 * factor + 32) >> ((3 - shift) & 31);
    };
    const Sample gB = shifted(p[0], p[1]), gA = shifted(p[2], p[3]) * (p[4] == 1 ? -1 : 1);
    const auto threshold = static_cast<Sample>(32u << ((p[5] - 1) & 31));
    Put(0, [&](int x) {
      Sample out = Clip(At(y, x) / 8, 0, 8191);
      if (full && b_.settings.processingSet != 3) {
        const Sample level =
            x < 2 || x >= n_ - 3
                ? At(y, x) / 64
                : (At(y, x - 2) + At(y, x + 2) + 2 * (At(y, x - 1) + At(y, x) + At(y, x + 1))) /
                      512;
        Sample sum = 0;
        for (const Samples& part : parts) sum += At(part, x);
        Sample t = At(gains, Clip(level, 0, 1023)) * sum / 128;
        if (t < 0) t = t * negative / 1024;
        out = Clip((At(y, x) + t) / 8, 0, 8191);
      }
      if (!full) return out;
      out = PlainLuminanceTone(
          out, b_.tuning.luminanceTone[*b_.settings.toneIndex][b_.settings.isoClass]);
      const Sample er = std::max(0, At(cr, x) - threshold), eb = std::max(0, At(cb, x) - threshold);
      return Clip((2 * out - (er * gA + eb * gB) / 16 + 1) / 2, 0, 8191);
    });
  }

  void HApc() {
    if (skipped()) return;
    const Samples in = In(TypeId::kRamenToYmix, 1);
    const auto pair = [&](int x, int k) { return At(in, x - k) + At(in, x + k); };
    const PlainApcCurve shortCurve(details().hApcShort, 8192), longCurve(details().hApcLong, 8192);
    Put(0, [&](int x) {
      const bool edge = x < 2 || x >= n_ - 2;
      return shortCurve((edge ? 0 : (2 * At(in, x) - At(in, x - 2) - At(in, x + 2)) / 4) / 16);
    });
    Put(1, [&](int x) {
      const bool edge = x < 3 || x >= n_ - 3;
      const Sample v = edge ? 0 : (8 * At(in, x) - pair(x, 1) - 4 * pair(x, 2) + pair(x, 3)) / 16;
      return longCurve(v / 16);
    });
  }

  /// A vertical filter of the greens with a symmetric kernel, the centre first.
  Samples Vertical(std::array<Sample, 4> taps, Sample divisor) const {
    std::array<Samples, 7> l;
    for (int o = -3; o <= 3; ++o)
      l[static_cast<std::size_t>(o + 3)] = In(TypeId::kAFilterHokanLpf, 0, o);
    Samples out;
    for (int x = 0; x < n_; ++x) {
      const auto pair = [&](std::size_t k) { return At(l[3 - k], x) + At(l[3 + k], x); };
      out.push_back(
          (taps[0] * At(l[3], x) + taps[1] * pair(1) + taps[2] * pair(2) + taps[3] * pair(3)) /
          divisor);
    }
    return out;
  }

  void VApc() {
    if (skipped()) return;
    const PlainApcCurve curve(details().vApc, 8192);
    const int selector = details().vApcFilter;
    const Samples p = selector == 0   ? Vertical({2, 0, -1, 0}, 2)
                      : selector == 5 ? Vertical({8, -1, -4, 1}, 8)
                                      : out_[0];
    Put(0, [&](int x) {
      const auto pair = [&](int k) { return At(p, x - k) + At(p, x + k); };
      const bool edge = x < 2 || x >= n_ - 2;
      return curve((edge ? At(p, x) : (6 * At(p, x) + 4 * pair(1) + pair(2)) / 16) / 2);
    });
  }

  void RApc() {
    if (skipped()) return;
    const auto horizontal = [&](const Samples& p, int mode, Sample edgeGain) {
      Samples out = p;
      const auto pair = [&](int x, int k) { return At(p, x - k) + At(p, x + k); };
      for (int x = 0; x < n_; ++x) {
        Sample& v = out[static_cast<std::size_t>(x)];
        if (mode == 0) {
          v = x == 0        ? 2 * At(p, 0) + 2 * At(p, 1)
              : x == n_ - 1 ? 2 * At(out, x - 1) + 2 * At(p, x)
                            : pair(x, 1) + 2 * At(p, x);
        } else if (x < 2 || x >= n_ - 2) {
          v = At(p, x) * (mode == 2 ? edgeGain : 1);
        } else {
          v = mode == 3 ? (6 * At(p, x) + 4 * pair(x, 1) + pair(x, 2)) / 4
                        : (10 * At(p, x) + 4 * pair(x, 1) - pair(x, 2)) / 4;
        }
      }
      return out;
    };
    const int mode1 = details().rApcVerticalMode;
    const Samples five = Vertical({6, 4, 1, 0}, 4);
    out_[1] = horizontal(five, details().rApcHorizontalMode, 1);
    out_[2] = horizontal(mode1 == 0 ? Vertical({28, 17, 2, -1}, 16) : five, mode1, 4);
    const Samples reference = Vertical({2, 1, 0, 0}, 1);
    const PlainApcCurve curve(details().rApc, 8192);
    const Sample w = details().rApcBlend;
    Put(0, [&](int x) {
      const Sample v = 8 * (4 * At(reference, x)) - (8 - w) * At(out_[1], x) - w * At(out_[2], x);
      return curve(v / 8 / 8);
    });
  }

  void AApc() {
    if (skipped()) return;
    const Samples in = In(TypeId::kAFilterMain, 0);
    const PlainApcCurve curve(details().aApc, 16384);
    Put(0, [&](int x) { return curve(At(in, x) / 16); });
  }

  void LastStage() {
    const Samples y = In(TypeId::kYMainProcs, 0), cr = In(TypeId::kColorSystemProc, 1),
                  cb = In(TypeId::kColorSystemProc, 2);
    const auto output = [&](Sample v) {
      return stage_.sampleBytes() == 1 ? Clip(v / 32768, 0, 255) : Clip(v / 128 + 7, 0, 65535);
    };
    for (int x = 0; x < n_; ++x) {
      const Sample a = At(y, x) * 1024, r = At(cr, x), b = At(cb, x);
      const auto at = static_cast<std::size_t>(3 * x);
      out_[0][at] = output(a + 1436 * r);
      out_[0][at + 1] = output(a - 352 * b - 731 * r);
      out_[0][at + 2] = output(a + 1814 * b - r);
    }
  }

  const StageBench& b_;
  const ComponentX& stage_;
  std::vector<Samples> out_;
  const int n_;
};

std::vector<Samples> LinesOf(const StageBench& bench, const ComponentX& stage) {
  std::vector<Samples> lines;
  for (int p = 0; p < stage.portCount(); ++p) lines.push_back(bench.Line(stage, p, 0));
  return lines;
}

class Stages : public testing::LevelTest {};
DEIMG_INSTANTIATE_LEVELS(Stages);

TEST_P(Stages, ComputeWhatIsStatedFromTheirWindowAlone) {
  // With --gtest_random_seed others than every day's.
  unsigned seed = 1000 * static_cast<unsigned>(GTEST_FLAG_GET(random_seed));
  for (const int width : {6, 8, 10, 18, 34, 70, 130}) {
    for (int round = 0; round < 24; ++round) {
      StageBench bench(width, ++seed);
      const bool hostile = round % 2 == 0, narrow = round % 4 < 2;
      bench.StartAnywhere(level, hostile, narrow, 8 + round % 3);
      for (const ComponentInfo& info : kComponents) {
        if (info.typeId == TypeId::kSourceStreamReader) continue;
        SCOPED_TRACE(std::string(info.name) + (narrow ? " narrow" : " wide") + ", width " +
                     std::to_string(width) + ", seed " + std::to_string(seed));
        ComponentX& stage = bench.Find(info.typeId);
        bench.FillInputs(stage, true);
        bench.FillInputs(stage, false);
        const std::vector<Samples> held = LinesOf(bench, stage);
        bench.Compute(stage);
        ASSERT_EQ(LinesOf(bench, stage), Plain(bench, stage, held).Lines());
        for (int p = 0; p < stage.portCount(); ++p) {
          for (const Sample v : bench.Line(stage, p, 0)) {
            ASSERT_TRUE(stage.port(p)->range().Contains(v)) << "port " << p << ": " << v;
          }
        }
        if (info.typeId == TypeId::kVApcProcs) continue;  // goes on from what it held
        bench.FillInputs(stage, false);
        const std::vector<Samples> lines = LinesOf(bench, stage);
        bench.Compute(stage);
        ASSERT_EQ(LinesOf(bench, stage), lines) << "lines outside the window matter";
      }
    }
  }
}

}  // namespace
}  // namespace deimg

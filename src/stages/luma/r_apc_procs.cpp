#include "stages/luma/r_apc_procs.h"

namespace deimg {
namespace {

constexpr int kCurveSize = 8192;
constexpr Sample kDivisor = 8;

// Modes of the horizontal passes.
constexpr int kMode121 = 0;
constexpr int kModeSharp = 2;
constexpr int kModeSoft = 3;

// Modes of the second vertical filter.
constexpr int kVertical28 = 0;
constexpr int kVertical20 = 1;
constexpr int kVertical6 = 2;

void HorizontalPass(const Sample* in, int mode, Sample sharpBorder, int width, Sample* out) {
  switch (mode) {
    case kMode121:
      HorizontalSmooth121Line(in, width, out);
      break;
    case kModeSharp:
      HorizontalSmooth5Line(in, 10, -1, sharpBorder, width, out);
      break;
    default:
      HorizontalSmooth5Line(in, 6, 1, 1, width, out);
  }
}

}  // namespace

void VerticalSmooth5Line(const SevenLines& in, int width, MutableLine out) {
  const Line u2 = in[1], u1 = in[2], m = in[3], d1 = in[4], d2 = in[5];
  for (int x = 0; x < width; ++x) {
    out[x] = (6 * m[x] + 4 * (u1[x] + d1[x]) + (u2[x] + d2[x])) / 4;
  }
}

void VerticalSmooth7Line(const SevenLines& in, const std::array<Sample, 4>& taps, int width,
                         MutableLine out) {
  const Line u3 = in[0], u2 = in[1], u1 = in[2], m = in[3], d1 = in[4], d2 = in[5], d3 = in[6];
  const Sample t0 = taps[0], t1 = taps[1], t2 = taps[2], t3 = taps[3];
  for (int x = 0; x < width; ++x) {
    out[x] = (t0 * m[x] + t1 * (u1[x] + d1[x]) + t2 * (u2[x] + d2[x]) + t3 * (u3[x] + d3[x])) / 16;
  }
}

void HorizontalSmooth121Line(Line in, int width, MutableLine out) {
  const int last = width - 1;
  out[0] = 2 * in[0] + 2 * in[1];
  for (int x = 1; x < last; ++x) out[x] = in[x - 1] + 2 * in[x] + in[x + 1];
  out[last] = 2 * out[last - 1] + 2 * in[last];
}

void HorizontalSmooth5Line(Line in, Sample centre, Sample far, Sample border, int width,
                           MutableLine out) {
  for (const int x : {0, 1, width - 2, width - 1}) out[x] = border * in[x];
  for (int x = 2; x < width - 2; ++x) {
    out[x] = (centre * in[x] + 4 * (in[x - 1] + in[x + 1]) + far * (in[x - 2] + in[x + 2])) / 4;
  }
}

void ReferenceLine(const SevenLines& in, int width, MutableLine out) {
  const Line u1 = in[2], m = in[3], d1 = in[4];
  for (int x = 0; x < width; ++x) out[x] = (u1[x] + 2 * m[x] + d1[x]) * 4;
}

void BlendLine(Line reference, Line smooth1, Sample weight, int width, MutableLine smooth0) {
  for (int x = 0; x < width; ++x) {
    smooth0[x] = (8 * reference[x] - (8 - weight) * smooth0[x] - weight * smooth1[x]) / 8;
  }
}

RApcProcs::RApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kRApcProcs), context.width, context.height, 4, 1),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result RApcProcs::Run(int first, int last) {
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  ComponentX* const luminance = LastInput(TypeId::kAFilterHokanLpf);
  if (luminance == nullptr) return DEIMG_MISSING;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;

  const int mode0 = tuning_.rApcHorizontalMode(*setIndex);
  if (mode0 != kMode121 && mode0 != kModeSharp && mode0 != kModeSoft) return DEIMG_UNSUPPORTED;
  const int mode1 = tuning_.rApcVerticalMode(*setIndex);
  if (mode1 != kVertical28 && mode1 != kVertical20 && mode1 != kVertical6) return DEIMG_BAD_TUNING;
  // The same mode chooses port 1's horizontal pass, which does not know this one.
  if (mode1 == kVertical20) return DEIMG_UNSUPPORTED;
  const Sample weight = tuning_.rApcBlend(*setIndex);
  if (weight < 0) return DEIMG_BAD_TUNING;
  if (!curve_) {
    DEIMG_RETURN_IF_FAILED(
        curve_.Build(tuning_.apcCurve(*setIndex, TuningBlock::ApcCurveId::kR), kCurveSize));
  }

  for (int o = first; o <= last; ++o) {
    SevenLines in;
    for (int i = 0; i < 7; ++i) in[static_cast<std::size_t>(i)] = luminance->GetLine(o + i - 3, 0);
    Sample* const p0 = OwnLine(o, 0);
    Sample* const p1 = OwnLine(o, 1);
    Sample* const p2 = OwnLine(o, 2);
    Sample* const vertical = Scratch(0);
    VerticalSmooth5Line(in, width(), vertical);
    HorizontalPass(vertical, mode0, 1, width(), p0);
    if (mode1 == kVertical28) {
      VerticalSmooth7Line(in, {28, 17, 2, -1}, width(), vertical);
    }  // otherwise the first filter's lines serve again
    HorizontalPass(vertical, mode1, 4, width(), p1);
    ReferenceLine(in, width(), p2);
    BlendLine(p2, p1, weight, width(), p0);
    curve_.Apply(p0, kDivisor, width(), p0);
  }
  return DEIMG_OK;
}

}  // namespace deimg

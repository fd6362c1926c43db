#include "stages/luma/v_apc_procs.h"

namespace deimg {
namespace {

constexpr int kLayout = 6;
constexpr int kCurveSize = 8192;
constexpr Sample kDivisor = 2;
constexpr int kThreeLines = 0;  // filter selectors
constexpr int kSevenLines = 5;

}  // namespace

void VerticalHighPass3Line(Line u2, Line m, Line d2, int width, MutableLine out) {
  for (int x = 0; x < width; ++x) out[x] = (2 * m[x] - u2[x] - d2[x]) / 2;
}

void VerticalHighPass7Line(Line u3, Line u2, Line u1, Line m, Line d1, Line d2, Line d3, int width,
                           MutableLine out) {
  for (int x = 0; x < width; ++x) {
    out[x] = (8 * m[x] - (u1[x] + d1[x]) - 4 * (u2[x] + d2[x]) + (u3[x] + d3[x])) / 8;
  }
}

void SmoothDetailLine(Line in, int width, MutableLine out) {
  for (const int x : {0, 1, width - 2, width - 1}) out[x] = in[x];
  for (int x = 2; x < width - 2; ++x) {
    out[x] = (6 * in[x] + 4 * (in[x - 1] + in[x + 1]) + (in[x - 2] + in[x + 2])) / 16;
  }
}

VApcProcs::VApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kVApcProcs), context.width, context.height, 4, 1),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result VApcProcs::Run(int first, int last) {
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  ComponentX* const luminance = LastInput(TypeId::kAFilterHokanLpf);
  if (luminance == nullptr) return DEIMG_MISSING;
  if (tuning_.vApcLayout(*setIndex) != kLayout) return DEIMG_BAD_TUNING;
  if (!curve_) {
    DEIMG_RETURN_IF_FAILED(
        curve_.Build(tuning_.apcCurve(*setIndex, TuningBlock::ApcCurveId::kV), kCurveSize));
  }
  const int filter = tuning_.vApcFilter(*setIndex);
  for (int o = first; o <= last; ++o) {
    const auto in = [&](int k) { return luminance->GetLine(o + k, 0); };
    Sample* const own = OwnLine(o, 0);
    if (filter == kThreeLines) {
      VerticalHighPass3Line(in(-2), in(0), in(2), width(), own);
    } else if (filter == kSevenLines) {
      VerticalHighPass7Line(in(-3), in(-2), in(-1), in(0), in(1), in(2), in(3), width(), own);
    }
    // With any other selector the port's line goes on from what it held.
    SmoothDetailLine(own, width(), Scratch(0));
    curve_.Apply(Scratch(0), kDivisor, width(), own);
  }
  return DEIMG_OK;
}

}  // namespace deimg

#include "stages/luma/h_apc_procs.h"

namespace deimg {
namespace {

constexpr int kLayout = 32;
constexpr int kCurveSize = 8192;
constexpr Sample kDivisor = 16;

}  // namespace

void NarrowHighPassLine(Line in, int width, MutableLine out) {
  out[0] = out[1] = out[width - 2] = out[width - 1] = 0;
  for (int x = 2; x < width - 2; ++x) out[x] = (2 * in[x] - in[x - 2] - in[x + 2]) / 4;
}

void WideHighPassLine(Line in, int width, MutableLine out) {
  for (int x = 0; x < 3; ++x) out[x] = out[width - 1 - x] = 0;
  for (int x = 3; x < width - 3; ++x) {
    out[x] = (8 * in[x] - (in[x - 1] + in[x + 1]) - 4 * (in[x - 2] + in[x + 2]) +
              (in[x - 3] + in[x + 3])) /
             16;
  }
}

HApcProcs::HApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kHApcProcs), context.width, context.height, 4),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result HApcProcs::BuildCurves(int setIndex) {
  using Id = TuningBlock::ApcCurveId;
  DEIMG_RETURN_IF_FAILED(narrow_.Build(tuning_.apcCurve(setIndex, Id::kHNarrow), kCurveSize));
  return wide_.Build(tuning_.apcCurve(setIndex, Id::kHWide), kCurveSize);
}

Result HApcProcs::Run(int first, int last) {
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  if (tuning_.hApcLayout(*setIndex) != kLayout) return DEIMG_BAD_TUNING;
  ComponentX* const luminance = LastInput(TypeId::kRamenToYmix);
  if (luminance == nullptr) return DEIMG_MISSING;
  if (!wide_) DEIMG_RETURN_IF_FAILED(BuildCurves(*setIndex));
  for (int o = first; o <= last; ++o) {
    const Sample* const in = luminance->GetLine(o, 1);
    NarrowHighPassLine(in, width(), OwnLine(o, 0));
    narrow_.Apply(OwnLine(o, 0), kDivisor, width(), OwnLine(o, 0));
    WideHighPassLine(in, width(), OwnLine(o, 1));
    wide_.Apply(OwnLine(o, 1), kDivisor, width(), OwnLine(o, 1));
  }
  return DEIMG_OK;
}

}  // namespace deimg

#include "stages/luma/h_apc_procs.h"

namespace deimg {
namespace {

constexpr int kLayout = 32;
constexpr int kCurveSize = 8192;
constexpr int kShift = 4;

}  // namespace

HApcProcs::HApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kHApcProcs), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result HApcProcs::Run(int first, int last) {
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  if (tuning_.hApcLayout(*setIndex) != kLayout) return DEIMG_BAD_TUNING;
  ComponentX* const luminance = LastInput(TypeId::kRamenToYmix);
  if (luminance == nullptr) return DEIMG_MISSING;
  using Id = TuningBlock::ApcCurveId;
  const ApcSegments narrow =
      MakeApcCurve(tuning_.apcCurve(*setIndex, Id::kHNarrow), kCurveSize, kShift);
  const ApcSegments wide =
      MakeApcCurve(tuning_.apcCurve(*setIndex, Id::kHWide), kCurveSize, kShift);
  for (int o = first; o <= last; ++o) {
    const Sample* const in = luminance->GetLine(o, 1);
    kernels_.narrowHighPassLine(in, narrow, width(), OwnLine(o, 0));
    kernels_.wideHighPassLine(in, wide, width(), OwnLine(o, 1));
  }
  return DEIMG_OK;
}

}  // namespace deimg

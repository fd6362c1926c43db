#include "stages/luma/a_apc_procs.h"

namespace deimg {
namespace {

constexpr int kCurveSize = 16384;
constexpr Sample kDivisor = 16;

}  // namespace

AApcProcs::AApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kAApcProcs), context.width, context.height, 4),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result AApcProcs::Run(int first, int last) {
  ComponentX* const detail = LastInput(TypeId::kAFilterMain);
  if (detail == nullptr) return DEIMG_UNSUPPORTED;
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  if (!curve_) {
    const auto setIndex = settings_.setIndex();
    if (!setIndex) return DEIMG_UNSUPPORTED;
    DEIMG_RETURN_IF_FAILED(
        curve_.Build(tuning_.apcCurve(*setIndex, TuningBlock::ApcCurveId::kA), kCurveSize));
  }
  for (int o = first; o <= last; ++o) {
    curve_.Apply(detail->GetLine(o, 0), kDivisor, width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

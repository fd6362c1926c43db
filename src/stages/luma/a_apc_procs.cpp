#include "stages/luma/a_apc_procs.h"

namespace deimg {
namespace {

constexpr int kCurveSize = 16384;
constexpr int kShift = 4;

}  // namespace

AApcProcs::AApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kAApcProcs), context.width, context.height, 4),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result AApcProcs::Run(int first, int last) {
  ComponentX* const detail = LastInput(TypeId::kAFilterMain);
  if (detail == nullptr) return DEIMG_UNSUPPORTED;
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const ApcSegments curve =
      MakeApcCurve(tuning_.apcCurve(*setIndex, TuningBlock::ApcCurveId::kA), kCurveSize, kShift);
  for (int o = first; o <= last; ++o) {
    kernels_.apcCurveLine(detail->GetLine(o, 0), curve, width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

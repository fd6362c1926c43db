/// Aperture correction of the A-filter's detail: the detail through a curve. Plain and quick
/// processing skip the stage, and its lines stay 0.
///
/// Input: the A-filter's detail. Output: kDetail.
#ifndef DEIMG_STAGES_LUMA_A_APC_PROCS_INL_H
#define DEIMG_STAGES_LUMA_A_APC_PROCS_INL_H

#include "stages/luma/a_filter_main-inl.h"
#include "stages/luma/apc_curve-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class AApcProcs final : public Stage {
 public:
  enum Port { kDetail };

  AApcProcs(const StageContext& context, AFilterMain<T>& detail)
      : Stage(InfoOf(TypeId::kAApcProcs), context.size(), {&detail}),
        idle_(context.settings.withoutDetail()),
        curve_(MakeApcCurve(context.details().aApc, 16384, 4)),
        in_(*this, detail, AFilterMain<T>::kDetail),
        detail_(*this, kDetail, idle_ ? Exactly(0) : curve_.values) {
    this->NeedsNarrow<T>(idle_ || curve_.isNarrow);
  }

 private:
  void ComputeLine(int o) override {
    if (!idle_) CurveLine(in_[o], curve_, width(), detail_[o]);
  }

  static void CurveLine(Line in, const ApcSegments& curve, int width, MutableLineOf<T> out) {
    ApcCurveColumns<T>(
        curve, 0, 0, width, [=]<int n>(Index x) { return Load<n>(in + x); }, out);
  }

  const bool idle_;
  const ApcSegments curve_;
  const Input<Sample> in_;
  const Output<T> detail_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_LUMA_A_APC_PROCS_INL_H

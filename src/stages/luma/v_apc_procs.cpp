#include "stages/luma/v_apc_procs.h"

#include <algorithm>

namespace deimg {
namespace {

constexpr int kLayout = 6;
constexpr int kCurveSize = 8192;
constexpr int kShift = 1;
constexpr int kThreeLines = 0;  // filter selectors
constexpr int kSevenLines = 5;

}  // namespace

template <typename T>
VApcProcs<T>::VApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kVApcProcs), context.width, context.height, 4, 1),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

template <typename T>
Result VApcProcs<T>::Run(int first, int last) {
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  ComponentX* const luminance = LastInput(TypeId::kAFilterHokanLpf);
  if (luminance == nullptr) return DEIMG_MISSING;
  if (tuning_.vApcLayout(*setIndex) != kLayout) return DEIMG_BAD_TUNING;
  const ApcSegments curve =
      MakeApcCurve(tuning_.apcCurve(*setIndex, TuningBlock::ApcCurveId::kV), kCurveSize, kShift);
  const int filter = tuning_.vApcFilter(*setIndex);
  for (int o = first; o <= last; ++o) {
    const SevenLines<T> in = LinesAround<T>(*luminance, o);
    Sample* const own = OwnLine(o, 0);
    Sample* const detail = Scratch(0);
    if (filter == kThreeLines) {
      kernels_.mosaic<T>().verticalHighPass3Line(in.line[1], in.line[3], in.line[5], width(),
                                                 detail);
    } else if (filter == kSevenLines) {
      kernels_.mosaic<T>().verticalHighPass7Line(in, width(), detail);
    } else {
      // With any other selector the line goes on from what it held.
      std::copy_n(own, width(), detail);
    }
    kernels_.smoothDetailLine(detail, curve, width(), own);
  }
  return DEIMG_OK;
}

template class VApcProcs<NarrowSample>;
template class VApcProcs<Sample>;

}  // namespace deimg

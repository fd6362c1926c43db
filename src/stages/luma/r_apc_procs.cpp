#include "stages/luma/r_apc_procs.h"

namespace deimg {
namespace {

constexpr int kCurveSize = 8192;
constexpr int kShift = 3;
constexpr Sample kSevenTaps[] = {28, 17, 2, -1};

// Modes of the horizontal passes.
constexpr int kMode121 = 0;
constexpr int kModeSharp = 2;
constexpr int kModeSoft = 3;

// Modes of the second vertical filter.
constexpr int kVertical28 = 0;
constexpr int kVertical20 = 1;
constexpr int kVertical6 = 2;

void HorizontalPass(const Kernels& kernels, const Sample* in, int mode, Sample sharpBorder,
                    int width, Sample* out) {
  switch (mode) {
    case kMode121:
      kernels.horizontalSmooth121Line(in, width, out);
      break;
    case kModeSharp:
      kernels.horizontalSmooth5Line(in, 10, -1, sharpBorder, width, out);
      break;
    default:
      kernels.horizontalSmooth5Line(in, 6, 1, 1, width, out);
  }
}

}  // namespace

template <typename T>
RApcProcs<T>::RApcProcs(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kRApcProcs), context.width, context.height, 4, 1),
      kernels_(context.kernels),
      settings_(context.settings),
      tuning_(context.tuning) {}

template <typename T>
Result RApcProcs<T>::Run(int first, int last) {
  if (settings_.plain() || settings_.quick()) return DEIMG_OK;
  ComponentX* const luminance = LastInput(TypeId::kAFilterHokanLpf);
  if (luminance == nullptr) return DEIMG_MISSING;
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;

  const int mode0 = tuning_.rApcHorizontalMode(*setIndex);
  if (mode0 != kMode121 && mode0 != kModeSharp && mode0 != kModeSoft) return DEIMG_UNSUPPORTED;
  const int mode1 = tuning_.rApcVerticalMode(*setIndex);
  if (mode1 != kVertical28 && mode1 != kVertical20 && mode1 != kVertical6) return DEIMG_BAD_TUNING;
  // The same mode chooses the second horizontal pass, which does not know this one.
  if (mode1 == kVertical20) return DEIMG_UNSUPPORTED;
  const Sample weight = tuning_.rApcBlend(*setIndex);
  if (weight < 0) return DEIMG_BAD_TUNING;
  const ApcSegments curve =
      MakeApcCurve(tuning_.apcCurve(*setIndex, TuningBlock::ApcCurveId::kR), kCurveSize, kShift);

  for (int o = first; o <= last; ++o) {
    const SevenLines<T> in = LinesAround<T>(*luminance, o);
    Sample* const smooth0 = OwnLine(o, 1);
    Sample* const smooth1 = OwnLine(o, 2);
    Sample* const vertical = Scratch(0);
    kernels_.mosaic<T>().verticalSmooth5Line(in, width(), vertical);
    HorizontalPass(kernels_, vertical, mode0, 1, width(), smooth0);
    if (mode1 == kVertical28) {
      kernels_.mosaic<T>().verticalSmooth7Line(in, kSevenTaps, width(), vertical);
    }  // otherwise the first filter's lines serve again
    HorizontalPass(kernels_, vertical, mode1, 4, width(), smooth1);
    kernels_.mosaic<T>().sharpenLine(in, smooth0, smooth1, weight, curve, width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

template class RApcProcs<NarrowSample>;
template class RApcProcs<Sample>;

}  // namespace deimg

#include "stages/colour/chroma_suppress.h"

#include <algorithm>
#include <optional>

#include "graph/look_up.h"
#include "graph/rounding.h"

namespace deimg {
namespace {

constexpr Sample kHighestLevel = kSuppressionCurveSize - 1;
constexpr Sample kFull = 128;

struct DarkRamp {
  double slope;
  double offset;
};

std::optional<DarkRamp> DarkRampOf(std::uint16_t code) {
  constexpr DarkRamp kRamps[] = {{0, 128}, {4, 64}, {4, 0}, {8, 0}};
  if (code >= std::size(kRamps)) return std::nullopt;
  return kRamps[code];
}

/// The first falling slope; the second one is four times as steep.
std::optional<double> SlopeOf(std::uint16_t code) {
  switch (code) {
    case 0:
      return 0.0;
    case 1:
      return -0.0625;
    case 2:
      return -0.03125;
    case 4:
      return -0.125;
    case 5:
      return -0.1875;
    case 6:
      return -0.15625;
    case 7:
      return -0.09375;
    case 8:
      return -0.25;
    case 11:
      return -0.21875;
    default:
      return std::nullopt;
  }
}

}  // namespace

Result BuildSuppressionCurve(const std::array<std::uint16_t, 9>& e, Sample* table) {
  const auto dark = DarkRampOf(e[1]);
  const auto slope2Code = SlopeOf(e[3]);
  const auto slope3Code = SlopeOf(e[2]);
  if (!dark || !slope2Code || !slope3Code) return DEIMG_UNSUPPORTED;
  const double slope2 = *slope2Code;
  const double slope3 = 4 * *slope3Code;

  const int x1 = dark->slope != 0 ? Truncated((128 - dark->offset) / dark->slope) : 0;
  const int base = e[6] == 1 ? 0 : 512;
  const int x2 = Low16((e[4] * 16) | base);
  const double y2 = e[5];
  const double intercept2 = y2 - x2 * slope2;
  const double intercept3 = y2 - x2 * slope3;
  const int xk = slope2 != 0 ? Truncated((128 - intercept2) / slope2) : 0;
  const int x3 = e[7];
  const int y3 = Truncated(x3 * slope3 + intercept3);
  const double slope4 = -(e[8] / 8.0);
  const double intercept4 = y3 - x3 * slope4;

  // Later ranges overwrite earlier ones; each is cut to the table.
  const auto fill = [table](int first, int last, auto value) {
    for (int i = std::max(first, 0); i <= std::min<int>(last, kHighestLevel); ++i) {
      table[i] = value(i);
    }
  };
  fill(0, x1, [&](int i) { return std::min(kFull, Truncated(i * dark->slope + dark->offset)); });
  fill(x1 + 1, xk, [](int) { return kFull; });
  fill(xk + 1, x2, [&](int i) { return std::min(kFull, Truncated(i * slope2 + intercept2)); });
  fill(x2 + 1, x3, [&](int i) { return std::max(0, Truncated(i * slope3 + intercept3)); });
  fill(x3 + 1, kHighestLevel,
       [&](int i) { return std::max(0, Truncated(i * slope4 + intercept4)); });
  return DEIMG_OK;
}

template <typename T>
ChromaSuppress<T>::ChromaSuppress(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kChromaSuppress), context.width, context.height, 4, 3),
      kernels_(context.kernels),
      settings_(context.settings),
      parameters_(context.tuning.chromaSuppression(context.settings.isoClass)),
      gainCr_(settings_.plain() ? kFull : context.tables.chromaGainCr),
      gainCb_(settings_.plain() ? kFull : context.tables.chromaGainCb) {}

template <typename T>
Result ChromaSuppress<T>::BuildTable() {
  auto table = BlockOf<Sample>::Zeroed(kSuppressionCurveSize);
  if (!table) return DEIMG_OUT_OF_MEMORY;
  DEIMG_RETURN_IF_FAILED(BuildSuppressionCurve(parameters_, table.get()));
  suppressTable_ = std::move(table);
  return DEIMG_OK;
}

template <typename T>
Result ChromaSuppress<T>::Run(int first, int last) {
  if (!suppressTable_) DEIMG_RETURN_IF_FAILED(BuildTable());
  constexpr int kSlots = 3;
  ComponentX* const luminance = LastInput(TypeId::kHorLpfForAFilter, kSlots);
  ComponentX* const matrix = LastInput(TypeId::kMatrix4x3, kSlots);
  ComponentX* const planes = LastInput(TypeId::kHokanVH, kSlots);
  if (luminance == nullptr || matrix == nullptr || planes == nullptr) return DEIMG_MISSING;
  auto* const level = Scratch<NarrowSample>(0);
  auto* const largest = Scratch<NarrowSample>(1);
  Sample* const curve = Scratch(2);
  for (int o = first; o <= last; ++o) {
    kernels_.mosaic<T>().suppressionLevelLine(planes->GetLine<T>(o, 0), planes->GetLine<T>(o, 3),
                                              luminance->GetLine(o, 0), width(), level);
    kernels_.largestLevelLine(level, width(), largest);
    LookUpLine(suppressTable_.get(), largest, width(), curve);
    kernels_.suppressLine(matrix->GetLine(o, 1), curve, gainCr_, width(), OwnLine(o, 0));
    kernels_.suppressLine(matrix->GetLine(o, 2), curve, gainCb_, width(), OwnLine(o, 1));
  }
  return DEIMG_OK;
}

template class ChromaSuppress<NarrowSample>;
template class ChromaSuppress<Sample>;

}  // namespace deimg

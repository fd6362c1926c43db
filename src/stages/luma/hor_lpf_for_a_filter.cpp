#include "stages/luma/hor_lpf_for_a_filter.h"

#include <algorithm>
#include <numeric>

namespace deimg {
namespace {

struct Kernel {
  int tapCount;
  Sample divisor;
  std::array<Sample, HorLpfForAFilter::kMostTaps> taps;
};

constexpr Kernel kDefaultKernels[] = {
    {3, 4, {1, 2, 1}},
    {5, 8, {1, 2, 2, 2, 1}},
    {7, 16, {1, 2, 3, 4, 3, 2, 1}},
    {9, 25, {1, 2, 3, 4, 5, 4, 3, 2, 1}},
};

template <int tapCount>
void FilterLine(Line in, const Sample* taps, Sample divisor, int width, MutableLine out) {
  constexpr int half = tapCount / 2;
  for (int x = half; x < width - half; ++x) {
    Sample sum = 0;
    for (int i = 0; i < tapCount; ++i) sum += taps[i] * in[x - half + i];
    out[x] = divisor == 1 ? sum : sum / divisor;
  }
}

/// The graph's kernel.
void Filter121Line(Line in, int width, MutableLine out) {
  for (int x = 1; x < width - 1; ++x) out[x] = in[x - 1] + 2 * in[x] + in[x + 1];
}

}  // namespace

void HorLpfLine(Line in, std::span<const Sample> taps, Sample divisor, int width, MutableLine out) {
  const Sample gain = std::accumulate(taps.begin(), taps.end(), Sample{0}) / divisor;
  const int half = std::min(static_cast<int>(taps.size()) / 2, width);
  for (int x = 0; x < half; ++x) {
    out[x] = in[x] * gain;
    out[width - 1 - x] = in[width - 1 - x] * gain;
  }
  switch (taps.size()) {
    case 3:
      if (divisor == 1 && taps[0] == 1 && taps[1] == 2 && taps[2] == 1) {
        Filter121Line(in, width, out);
      } else {
        FilterLine<3>(in, taps.data(), divisor, width, out);
      }
      break;
    case 5:
      FilterLine<5>(in, taps.data(), divisor, width, out);
      break;
    case 7:
      FilterLine<7>(in, taps.data(), divisor, width, out);
      break;
    case 9:
      FilterLine<9>(in, taps.data(), divisor, width, out);
      break;
    default:
      break;
  }
}

HorLpfForAFilter::HorLpfForAFilter(const StageContext& context, int tapCount)
    : ComponentX(InfoOf(TypeId::kHorLpfForAFilter), context.width, context.height, 4),
      tapCount_(tapCount) {
  for (const Kernel& kernel : kDefaultKernels) {
    if (kernel.tapCount != tapCount) continue;
    taps_ = kernel.taps;
    divisor_ = kernel.divisor;
  }
}

void HorLpfForAFilter::SetTaps(std::span<const Sample> taps, Sample divisor) {
  if (divisor_ == 0 || taps.size() != static_cast<std::size_t>(tapCount_)) return;
  std::copy(taps.begin(), taps.end(), taps_.begin());
  divisor_ = divisor;
}

Result HorLpfForAFilter::Run(int first, int last) {
  if (divisor_ == 0) return DEIMG_BAD_TUNING;
  ComponentX* const source = input(0);
  if (source == nullptr) return DEIMG_MISSING;
  const std::span<const Sample> taps(taps_.data(), static_cast<std::size_t>(tapCount_));
  for (int o = first; o <= last; ++o) {
    HorLpfLine(source->GetLine(o, 0), taps, divisor_, width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

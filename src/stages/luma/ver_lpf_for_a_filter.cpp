#include "stages/luma/ver_lpf_for_a_filter.h"

namespace deimg {
namespace {

struct Kernel {
  int selector;
  VerLpfTaps taps;
};

constexpr Kernel kKernels[] = {
    {8, {1, -2, 7, 20}},  {9, {2, -2, 6, 20}},  {10, {1, -4, 7, 24}}, {15, {2, -5, 6, 26}},
    {24, {0, -2, 8, 20}}, {26, {0, -4, 8, 24}}, {28, {0, 0, 8, 16}},
};

/// `own` is 0 when the even columns hold the low-passed sites themselves, else 1.
template <int own>
void FilterLine(Line u3, Line u2, Line u1, Line m, Line d1, Line d2, Line d3,
                const VerLpfTaps& taps, int width, MutableLine out) {
  const Sample t0 = taps[0], t1 = taps[1], t2 = taps[2], t3 = taps[3];
  for (int x = 0; x < width; x += 2) {
    const int site = x + own;
    const int other = x + 1 - own;
    out[site] = (t3 * m[site] + t1 * (u2[site] + d2[site])) / 4;
    out[other] = (t2 * (u1[other] + d1[other]) + t0 * (u3[other] + d3[other])) / 4;
  }
}

}  // namespace

std::optional<VerLpfTaps> VerLpfTapsOf(int selector) {
  for (const Kernel& kernel : kKernels) {
    if (kernel.selector == selector) return kernel.taps;
  }
  return std::nullopt;
}

void VerLpfLine(const std::array<const Sample*, 7>& l, const VerLpfTaps& taps, bool oddLine,
                int width, MutableLine out) {
  const auto filterLine = oddLine ? FilterLine<0> : FilterLine<1>;
  filterLine(l[0], l[1], l[2], l[3], l[4], l[5], l[6], taps, width, out);
}

VerLpfForAFilter::VerLpfForAFilter(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kVerLpfForAFilter), context.width, context.height, 4),
      settings_(context.settings),
      tuning_(context.tuning) {}

Result VerLpfForAFilter::Run(int first, int last) {
  const auto setIndex = settings_.setIndex();
  if (!setIndex) return DEIMG_UNSUPPORTED;
  const auto taps = VerLpfTapsOf(tuning_.verLpfKernelSelect(*setIndex));
  if (!taps) return DEIMG_UNSUPPORTED;
  ComponentX* const mosaic = input(0);
  if (mosaic == nullptr) return DEIMG_MISSING;
  for (int o = first; o <= last; ++o) {
    std::array<const Sample*, 7> lines;
    for (int i = 0; i < 7; ++i) lines[static_cast<std::size_t>(i)] = mosaic->GetLine(o + i - 3, 0);
    VerLpfLine(lines, *taps, IsOddAt(o), width(), OwnLine(o, 0));
  }
  return DEIMG_OK;
}

}  // namespace deimg

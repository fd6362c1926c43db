#include "stages/colour/median_crcb.h"

#include <algorithm>

namespace deimg {
namespace {

/// Sorts the three values of every column.
void SortColumnsLine(Line above, Line centre, Line below, int width, MutableLine lowest,
                     MutableLine middle, MutableLine highest) {
  for (int x = 0; x < width; ++x) {
    const Sample low = std::min(above[x], below[x]);
    const Sample high = std::max(above[x], below[x]);
    lowest[x] = std::min(low, centre[x]);
    highest[x] = std::max(high, centre[x]);
    middle[x] = std::max(low, std::min(high, centre[x]));
  }
}

void Order(Sample& low, Sample& high) {
  const Sample smaller = std::min(low, high);
  high = std::max(low, high);
  low = smaller;
}

Sample MedianOf5(Sample a, Sample b, Sample c, Sample d, Sample e) {
  Order(a, b);
  Order(c, d);
  Sample low = std::max(a, c);
  Sample high = std::min(b, d);
  Order(low, high);
  return std::max(low, std::min(high, e));
}

/// Medians of five neighbouring columns, each sorted. Sorting the five smallest, the five middle
/// and the five largest values among themselves leaves seven candidates: the two largest of the
/// smallest, the middle three of the middle ones, and the two smallest of the largest. Of the other
/// eight values four are below and four above, so the median of the seven is the median of all.
void MedianOfColumnsLine(Line lowest, Line middle, Line highest, int width, MutableLine out) {
  for (int x = 2; x < width - 2; ++x) {
    Sample l0 = lowest[x - 2], l1 = lowest[x - 1], l2 = lowest[x], l3 = lowest[x + 1];
    Order(l0, l1);
    Order(l2, l3);
    const Sample l4 = lowest[x + 2];
    const Sample top = std::max(l1, l3);
    Sample p = std::max(std::max(std::min(l1, l3), std::max(l0, l2)), std::min(top, l4));
    Sample q = std::max(top, l4);

    Sample h0 = highest[x - 2], h1 = highest[x - 1], h2 = highest[x], h3 = highest[x + 1];
    Order(h0, h1);
    Order(h2, h3);
    const Sample h4 = highest[x + 2];
    const Sample bottom = std::min(h0, h2);
    Sample u = std::min(bottom, h4);
    Sample v = std::min(std::min(std::max(h0, h2), std::min(h1, h3)), std::max(bottom, h4));

    Sample m0 = middle[x - 2], m1 = middle[x - 1], m2 = middle[x], m3 = middle[x + 1];
    Sample m4 = middle[x + 2];
    Order(m0, m1);
    Order(m3, m4);
    Order(m2, m4);
    Order(m2, m3);
    Order(m1, m4);
    Order(m0, m3);
    Order(m0, m2);
    Order(m1, m3);
    Order(m1, m2);

    // p <= q, m1 <= m2 <= m3, u <= v: drop the smallest and the largest of the seven.
    Order(p, m1);
    u = std::max(p, u);
    Order(q, m3);
    v = std::min(m3, v);
    out[x] = MedianOf5(m1, u, q, v, m2);
  }
}

}  // namespace

void MedianLine(const Sample* above, const Sample* centre, const Sample* below, int width,
                Sample* lowest, Sample* middle, Sample* highest, Sample* out) {
  SortColumnsLine(above, centre, below, width, lowest, middle, highest);
  MedianOfColumnsLine(lowest, middle, highest, width, out);
  for (const int x : {0, 1, width - 2, width - 1}) out[x] = centre[x];
}

MedianCrCb::MedianCrCb(const StageContext& context)
    : ComponentX(InfoOf(TypeId::kMedianCrCb), context.width, context.height, 4, 3),
      filter_(!context.settings.medianOff()) {}

Result MedianCrCb::Run(int first, int last) {
  ComponentX* const differences = FirstInput(TypeId::kHokanCircuit);
  if (differences == nullptr) return DEIMG_MISSING;
  if (!filter_) return DEIMG_OK;
  constexpr int kRedMinusGreen = 0;
  constexpr int kBlueMinusGreen = 3;
  for (int o = first; o <= last; ++o) {
    for (const int port : {kRedMinusGreen, kBlueMinusGreen}) {
      MedianLine(differences->GetLine(o - 1, port), differences->GetLine(o, port),
                 differences->GetLine(o + 1, port), width(), Scratch(0), Scratch(1), Scratch(2),
                 OwnLine(o, port == kRedMinusGreen ? 0 : 1));
    }
  }
  return DEIMG_OK;
}

}  // namespace deimg

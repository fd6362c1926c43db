/// Median of the colour differences, which removes isolated colour errors.
///
/// Input: the colour differences, three lines. Output: kRedMinusGreen and kBlueMinusGreen, the
/// exact median of three lines by five columns, same scale; the two outer columns on each side are
/// copied. Switched off, the stage writes nothing.
#ifndef DEIMG_STAGES_COLOUR_MEDIAN_CRCB_INL_H
#define DEIMG_STAGES_COLOUR_MEDIAN_CRCB_INL_H

#include "stages/colour/hokan_circuit-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class MedianCrCb final : public Stage {
 public:
  enum Port { kRedMinusGreen, kBlueMinusGreen };

  MedianCrCb(const StageContext& context, HokanCircuit<T>& differences)
      : Stage(InfoOf(TypeId::kMedianCrCb), context.size(), {&differences}, 3),
        filters_(!context.settings.medianOff()),
        redIn_(*this, differences, HokanCircuit<T>::kRedMinusGreen),
        blueIn_(*this, differences, HokanCircuit<T>::kBlueMinusGreen),
        red_(*this, kRedMinusGreen, redIn_.range()),
        blue_(*this, kBlueMinusGreen, blueIn_.range()) {}

 private:
  void ComputeLine(int o) override {
    if (!filters_) return;
    MedianLine(redIn_, o, red_[o]);
    MedianLine(blueIn_, o, blue_[o]);
  }

  void MedianLine(const Input<T>& in, int o, T* out) const {
    // The columns' three values in ascending order.
    T* const lowest = Scratch<T>(0);
    T* const middle = Scratch<T>(1);
    T* const highest = Scratch<T>(2);
    SortColumnsLine(in[o - 1], in[o], in[o + 1], width(), lowest, middle, highest);
    MedianOfColumnsLine(lowest, middle, highest, width(), out);
    const T* const centre = in[o];
    for (const int x : {0, 1, width() - 2, width() - 1}) out[x] = centre[x];
  }

  /// Sorts the three values of every column.
  static void SortColumnsLine(LineOf<T> above, LineOf<T> centre, LineOf<T> below, int width,
                              MutableLineOf<T> lowest, MutableLineOf<T> middle,
                              MutableLineOf<T> highest) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto a = Load<n>(above + x), b = Load<n>(below + x), c = Load<n>(centre + x);
      const auto low = Min(a, b), high = Max(a, b);
      Store(lowest + x, Min(low, c));
      Store(highest + x, Max(high, c));
      Store(middle + x, Max(low, Min(high, c)));
    });
  }

  template <typename V>
  DEIMG_INLINE static void Order(V& low, V& high) {
    const V smaller = Min(low, high);
    high = Max(low, high);
    low = smaller;
  }

  template <typename V>
  DEIMG_INLINE static V MedianOf5(V a, V b, V c, V d, V e) {
    Order(a, b);
    Order(c, d);
    V low = Max(a, c);
    V high = Min(b, d);
    Order(low, high);
    return Max(low, Min(high, e));
  }

  /// Medians of five neighbouring columns, each sorted. Sorting the five smallest, the five middle
  /// and the five largest values among themselves leaves seven candidates: the two largest of the
  /// smallest, the middle three of the middle ones, and the two smallest of the largest. Of the
  /// other eight values four are below and four above, so the median of the seven is the median of
  /// all.
  static void MedianOfColumnsLine(LineOf<T> lowest, LineOf<T> middle, LineOf<T> highest, int width,
                                  MutableLineOf<T> out) {
    ForColumns<T>(2, width - 2, [=]<int n>(LaneCount<n>, Index x) {
      using V = Lanes<T, n>;
      const auto at = [=](LineOf<T> line, Index k) { return Load<n>(line + x + k); };
      V l0 = at(lowest, -2), l1 = at(lowest, -1), l2 = at(lowest, 0), l3 = at(lowest, 1);
      Order(l0, l1);
      Order(l2, l3);
      const V l4 = at(lowest, 2);
      const V top = Max(l1, l3);
      V p = Max(Max(Min(l1, l3), Max(l0, l2)), Min(top, l4));
      V q = Max(top, l4);

      V h0 = at(highest, -2), h1 = at(highest, -1), h2 = at(highest, 0), h3 = at(highest, 1);
      Order(h0, h1);
      Order(h2, h3);
      const V h4 = at(highest, 2);
      const V bottom = Min(h0, h2);
      V u = Min(bottom, h4);
      V v = Min(Min(Max(h0, h2), Min(h1, h3)), Max(bottom, h4));

      V m0 = at(middle, -2), m1 = at(middle, -1), m2 = at(middle, 0), m3 = at(middle, 1);
      V m4 = at(middle, 2);
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
      u = Max(p, u);
      Order(q, m3);
      v = Min(m3, v);
      Store(out + x, MedianOf5(m1, u, q, v, m2));
    });
  }

  const bool filters_;
  const Input<T> redIn_;
  const Input<T> blueIn_;
  const Output<T> red_;
  const Output<T> blue_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_MEDIAN_CRCB_INL_H

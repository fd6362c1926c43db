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
        blueIn_(*this, differences, HokanCircuit<T>::kBlueMinusGreen) {}

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
    for (Index x = 0; x < width; ++x) {
      const T low = Min(above[x], below[x]);
      const T high = Max(above[x], below[x]);
      lowest[x] = Min(low, centre[x]);
      highest[x] = Max(high, centre[x]);
      middle[x] = Max(low, Min(high, centre[x]));
    }
  }

  static void Order(T& low, T& high) {
    const T smaller = Min(low, high);
    high = Max(low, high);
    low = smaller;
  }

  static T MedianOf5(T a, T b, T c, T d, T e) {
    Order(a, b);
    Order(c, d);
    T low = Max(a, c);
    T high = Min(b, d);
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
    for (Index x = 2; x < width - 2; ++x) {
      T l0 = lowest[x - 2], l1 = lowest[x - 1], l2 = lowest[x], l3 = lowest[x + 1];
      Order(l0, l1);
      Order(l2, l3);
      const T l4 = lowest[x + 2];
      const T top = Max(l1, l3);
      T p = Max(Max(Min(l1, l3), Max(l0, l2)), Min(top, l4));
      T q = Max(top, l4);

      T h0 = highest[x - 2], h1 = highest[x - 1], h2 = highest[x], h3 = highest[x + 1];
      Order(h0, h1);
      Order(h2, h3);
      const T h4 = highest[x + 2];
      const T bottom = Min(h0, h2);
      T u = Min(bottom, h4);
      T v = Min(Min(Max(h0, h2), Min(h1, h3)), Max(bottom, h4));

      T m0 = middle[x - 2], m1 = middle[x - 1], m2 = middle[x], m3 = middle[x + 1];
      T m4 = middle[x + 2];
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
      out[x] = MedianOf5(m1, u, q, v, m2);
    }
  }

  const bool filters_;
  const Input<T> redIn_;
  const Input<T> blueIn_;
  const Output<T> red_{*this, kRedMinusGreen};
  const Output<T> blue_{*this, kBlueMinusGreen};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_MEDIAN_CRCB_INL_H

/// Direction measure: how much the picture changes down the columns and along the lines.
///
/// Input: the white-balanced mosaic, five lines. Output: kMeasure, vertical minus horizontal
/// activity, in the mosaic's scale, signed; negative where the picture changes more along the line.
/// The two outer columns on each side are 0.
#ifndef DEIMG_STAGES_COLOUR_VH_DIFF_INL_H
#define DEIMG_STAGES_COLOUR_VH_DIFF_INL_H

#include "line/lanes-inl.h"
#include "stages/colour/white_balance-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class VHDiff final : public Stage {
 public:
  enum Port { kMeasure };

  VHDiff(const StageContext& context, WhiteBalance<T>& mosaic)
      : Stage(InfoOf(TypeId::kVHDiff), context.size(), {&mosaic}),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic),
        measure_(*this, kMeasure, MeasureRange(mosaic_.range())) {}

 private:
  static Range MeasureRange(Range m) {
    const Range activity = Magnitude(2 * m - (m + m)) + Magnitude(m - m);
    return Either(activity - activity, Exactly(0));
  }

  void ComputeLine(int o) override {
    MeasureLine(mosaic_[o - 2], mosaic_[o - 1], mosaic_[o], mosaic_[o + 1], mosaic_[o + 2], width(),
                measure_[o]);
  }

  /// u2, u1, m, d1, d2 are the lines two above to two below. Samples two apart have the same
  /// colour.
  static void MeasureLine(LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1, LineOf<T> d2,
                          int width, MutableLineOf<T> out) {
    ForColumns<T>(2, width - 2, [=]<int n>(LaneCount<n>, Index x) {
      const auto at = [=](LineOf<T> line, Index column) { return Load<n>(line + column); };
      const auto twice = at(m, x) << 1;
      const auto horizontal =
          Abs(twice - at(m, x - 2) - at(m, x + 2)) + Abs(at(m, x - 1) - at(m, x + 1));
      const auto vertical = Abs(twice - at(u2, x) - at(d2, x)) + Abs(at(u1, x) - at(d1, x));
      Store(out + x, vertical - horizontal);
    });
    out[0] = out[1] = out[width - 2] = out[width - 1] = 0;
  }

  const Input<T> mosaic_;
  const Output<T> measure_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_VH_DIFF_INL_H

/// Direction measure: how much the picture changes down the columns and along the lines.
///
/// Input: the white-balanced mosaic, five lines. Output: kMeasure, vertical minus horizontal
/// activity, in the mosaic's scale, signed; negative where the picture changes more along the line.
/// The two outer columns on each side are 0.
#ifndef DEIMG_STAGES_COLOUR_VH_DIFF_INL_H
#define DEIMG_STAGES_COLOUR_VH_DIFF_INL_H

#include "stages/colour/white_balance-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class VHDiff final : public Stage {
 public:
  enum Port { kMeasure };

  VHDiff(const StageContext& context, WhiteBalance<T>& mosaic)
      : Stage(InfoOf(TypeId::kVHDiff), context.size(), {&mosaic}),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic) {}

 private:
  void ComputeLine(int o) override {
    MeasureLine(mosaic_[o - 2], mosaic_[o - 1], mosaic_[o], mosaic_[o + 1], mosaic_[o + 2], width(),
                measure_[o]);
  }

  /// u2, u1, m, d1, d2 are the lines two above to two below. Samples two apart have the same
  /// colour.
  static void MeasureLine(LineOf<T> u2, LineOf<T> u1, LineOf<T> m, LineOf<T> d1, LineOf<T> d2,
                          int width, MutableLineOf<T> out) {
    out[0] = out[1] = out[width - 2] = out[width - 1] = 0;
    for (Index x = 2; x < width - 2; ++x) {
      const auto horizontal = static_cast<T>(Abs(static_cast<T>(2 * m[x] - m[x - 2] - m[x + 2])) +
                                             Abs(static_cast<T>(m[x - 1] - m[x + 1])));
      const auto vertical = static_cast<T>(Abs(static_cast<T>(2 * m[x] - u2[x] - d2[x])) +
                                           Abs(static_cast<T>(u1[x] - d1[x])));
      out[x] = static_cast<T>(vertical - horizontal);
    }
  }

  const Input<T> mosaic_;
  const Output<T> measure_{*this, kMeasure};
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_VH_DIFF_INL_H

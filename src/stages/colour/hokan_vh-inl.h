/// Interpolation of the mosaic into four colour planes.
///
/// Where the picture changes along the line by more than a threshold, the two green planes exchange
/// their values.
///
/// Inputs: the white-balanced mosaic, three lines; the direction measure. Output: kRed,
/// kGreenOfRed, kGreenOfBlue, kBlue, four times the mosaic's scale.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_VH_INL_H
#define DEIMG_STAGES_COLOUR_HOKAN_VH_INL_H

#include "stages/colour/mosaic_interpolation-inl.h"
#include "stages/colour/vh_diff-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class HokanVH final : public Stage {
 public:
  enum Port { kRed, kGreenOfRed, kGreenOfBlue, kBlue };

  HokanVH(const StageContext& context, WhiteBalance<T>& mosaic, VHDiff<T>& direction)
      : Stage(InfoOf(TypeId::kHokanVH), context.size(), {&mosaic, &direction}),
        threshold_(context.filters().directionThreshold),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic),
        direction_(*this, direction, VHDiff<T>::kMeasure),
        red_(*this, kRed, PlaneRange(mosaic_.range())),
        greenOfRed_(*this, kGreenOfRed, PlaneRange(mosaic_.range())),
        greenOfBlue_(*this, kGreenOfBlue, PlaneRange(mosaic_.range())),
        blue_(*this, kBlue, PlaneRange(mosaic_.range())) {}

 private:
  void ComputeLine(int o) override {
    const PlaneLines<T> out{red_[o], greenOfRed_[o], greenOfBlue_[o], blue_[o]};
    InterpolateMosaicLine(mosaic_[o - 1], mosaic_[o], mosaic_[o + 1], IsOddAt(o), width(), out);
    ExchangeGreensLine(direction_[o], threshold_, width(), out.gr, out.gb);
  }

  /// Exchanges gr and gb wherever the direction is below -threshold.
  static void ExchangeGreensLine(LineOf<T> direction, Sample threshold, int width,
                                 MutableLineOf<T> gr, MutableLineOf<T> gb) {
    const T limit = Nearest<T>(-threshold);
    for (Index x = 0; x < width; ++x) {
      const bool exchange = direction[x] < limit;
      const T first = gr[x];
      const T second = gb[x];
      gr[x] = exchange ? second : first;
      gb[x] = exchange ? first : second;
    }
  }

  const Sample threshold_;
  const Input<T> mosaic_;
  const Input<T> direction_;
  const Output<T> red_;
  const Output<T> greenOfRed_;
  const Output<T> greenOfBlue_;
  const Output<T> blue_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_HOKAN_VH_INL_H

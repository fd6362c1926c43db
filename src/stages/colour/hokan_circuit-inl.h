/// Red minus green and blue minus green at every sample.
///
/// Interpolates the mosaic and takes from red and blue either the average green or the green that
/// the direction suggests, whichever leaves the smaller differences. The differences are for the
/// median alone: without it none are computed.
///
/// Inputs: the direction measure; the white-balanced mosaic, three lines. Output: kRedMinusGreen
/// and kBlueMinusGreen, four times the mosaic's scale; between them the green planes.
#ifndef DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_INL_H
#define DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_INL_H

#include "stages/colour/mosaic_interpolation-inl.h"
#include "stages/colour/vh_diff-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class HokanCircuit final : public Stage {
 public:
  enum Port { kRedMinusGreen, kGreenOfRed, kGreenOfBlue, kBlueMinusGreen };

  HokanCircuit(const StageContext& context, VHDiff<T>& direction, WhiteBalance<T>& mosaic)
      : Stage(InfoOf(TypeId::kHokanCircuit), context.size(), {&direction, &mosaic}),
        needed_(!context.settings.medianOff()),
        threshold_(context.filters().directionThreshold),
        chooses_(context.tuning.greenChoiceEnable != 0),
        direction_(*this, direction, VHDiff<T>::kMeasure),
        mosaic_(*this, mosaic, WhiteBalance<T>::kMosaic),
        planes_(needed_ ? PlaneRange(mosaic_.range()) : Exactly(0)),
        red_(*this, kRedMinusGreen, planes_ - planes_),
        greenOfRed_(*this, kGreenOfRed, planes_),
        greenOfBlue_(*this, kGreenOfBlue, planes_),
        blue_(*this, kBlueMinusGreen, planes_ - planes_) {
    this->template Needs<T>(planes_ + planes_);
    this->template Needs<T>(Magnitude(red_.range()) + Magnitude(blue_.range()));
  }

 private:
  void ComputeLine(int o) override {
    if (!needed_) return;
    const PlaneLines<T> out{red_[o], greenOfRed_[o], greenOfBlue_[o], blue_[o]};
    InterpolateMosaicLine(mosaic_[o - 1], mosaic_[o], mosaic_[o + 1], IsOddAt(o), width(), out);
    DifferenceLine(direction_[o], threshold_, chooses_, out.gr, out.gb, width(), out.r, out.b);
  }

  /// Replaces red and blue by their differences from green. The greens change roles where the
  /// direction is below -threshold and `choose` is set. A tie goes to the greens of the direction.
  static void DifferenceLine(LineOf<T> direction, Sample threshold, bool choose, LineOf<T> gr,
                             LineOf<T> gb, int width, MutableLineOf<T> red, MutableLineOf<T> blue) {
    // Nothing lies below the lowest value.
    const T limit = choose ? Nearest<T>(-threshold) : kLowest<T>;
    for (Index x = 0; x < width; ++x) {
      const auto average = static_cast<T>(static_cast<T>(gr[x] + gb[x]) / 2);
      const auto averageRed = static_cast<T>(red[x] - average);
      const auto averageBlue = static_cast<T>(blue[x] - average);
      const bool exchange = direction[x] < limit;
      const auto directedRed = static_cast<T>(red[x] - (exchange ? gb[x] : gr[x]));
      const auto directedBlue = static_cast<T>(blue[x] - (exchange ? gr[x] : gb[x]));
      const bool useAverage = static_cast<T>(Abs(directedRed) + Abs(directedBlue)) >
                              static_cast<T>(Abs(averageRed) + Abs(averageBlue));
      red[x] = useAverage ? averageRed : directedRed;
      blue[x] = useAverage ? averageBlue : directedBlue;
    }
  }

  const bool needed_;
  const Sample threshold_;
  const bool chooses_;
  const Input<T> direction_;
  const Input<T> mosaic_;
  const Range planes_;
  const Output<T> red_;
  const Output<T> greenOfRed_;
  const Output<T> greenOfBlue_;
  const Output<T> blue_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_HOKAN_CIRCUIT_INL_H

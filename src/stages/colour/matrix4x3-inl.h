/// From colour planes to luminance and two colour differences.
///
/// Luminance comes from the four planes; the colour differences from the median's, or from the
/// planes too when the median is off.
///
/// Inputs: the four planes; the median's differences. Output: kLuminance, kFirstDifference,
/// kSecondDifference, four times the mosaic's scale.
#ifndef DEIMG_STAGES_COLOUR_MATRIX4X3_INL_H
#define DEIMG_STAGES_COLOUR_MATRIX4X3_INL_H

#include "line/lanes-inl.h"
#include "stages/colour/hokan_vh-inl.h"
#include "stages/colour/median_crcb-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class Matrix4x3 final : public Stage {
 public:
  enum Port { kLuminance, kFirstDifference, kSecondDifference };

  Matrix4x3(const StageContext& context, HokanVH<T>& planes, MedianCrCb<T>& median)
      : Stage(InfoOf(TypeId::kMatrix4x3), context.size(), {&planes, &median}),
        coefficients_(context.settings.plainProcessing() ? kBuiltInMatrix
                                                         : context.tables.colourMatrix),
        fromPlanes_(context.settings.medianOff()),
        red_(*this, planes, HokanVH<T>::kRed),
        greenOfRed_(*this, planes, HokanVH<T>::kGreenOfRed),
        greenOfBlue_(*this, planes, HokanVH<T>::kGreenOfBlue),
        blue_(*this, planes, HokanVH<T>::kBlue),
        redMinusGreen_(*this, median, MedianCrCb<T>::kRedMinusGreen),
        blueMinusGreen_(*this, median, MedianCrCb<T>::kBlueMinusGreen),
        luminance_(*this, kLuminance, RowRange(&coefficients_[4])),
        first_(*this, kFirstDifference, DifferenceRange(&coefficients_[0])),
        second_(*this, kSecondDifference, DifferenceRange(&coefficients_[8])) {}

 private:
  /// Three rows of four coefficients, kMatrixOne = 1.0: first colour difference, luminance, second
  /// colour difference. Columns: red, Gr, blue, Gb.
  using ColourMatrix = std::array<std::int16_t, 12>;
  // clang-format off
  /// Used for plain processing.
  static constexpr ColourMatrix kBuiltInMatrix = {
       717, -717, -113,  113,
       307,  205,  113,  399,
      -307,  307,  911, -911,
  };
  // clang-format on

  Range RowRange(const std::int16_t* row) const {
    return (row[0] * red_.range() + row[1] * greenOfRed_.range() + row[2] * blue_.range() +
            row[3] * greenOfBlue_.range()) /
           kMatrixOne;
  }
  Range DifferenceRange(const std::int16_t* row) const {
    if (fromPlanes_) return RowRange(row);
    return (row[0] * redMinusGreen_.range() + row[2] * blueMinusGreen_.range()) / kMatrixOne;
  }

  void ComputeLine(int o) override {
    const ColourMatrix& m = coefficients_;
    PlanesLine(o, &m[4], luminance_[o]);
    if (fromPlanes_) {
      PlanesLine(o, &m[0], first_[o]);
      PlanesLine(o, &m[8], second_[o]);
    } else {
      const T* const cr = redMinusGreen_[o];
      const T* const cb = blueMinusGreen_[o];
      PairLine(cr, cb, m[0], m[2], width(), first_[o]);
      PairLine(cr, cb, m[8], m[10], width(), second_[o]);
    }
  }

  void PlanesLine(int o, const std::int16_t* row, T* out) const {
    RowLine(red_[o], greenOfRed_[o], blue_[o], greenOfBlue_[o], row, width(), out);
  }

  /// One row of the matrix on four planes.
  static void RowLine(LineOf<T> r, LineOf<T> gr, LineOf<T> b, LineOf<T> gb, const std::int16_t* row,
                      int width, MutableLineOf<T> out) {
    const Sample m0 = row[0], m1 = row[1], m2 = row[2], m3 = row[3];
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto sum = DotPairs(Load<n>(r + x), m0, Load<n>(gr + x), m1) +
                       DotPairs(Load<n>(b + x), m2, Load<n>(gb + x), m3);
      Store(out + x, Narrowed(Quotient<kMatrixBits>(sum)));
    });
  }

  /// The red and blue coefficients of a row on the two colour differences.
  static void PairLine(LineOf<T> redMinusGreen, LineOf<T> blueMinusGreen, Sample mRed, Sample mBlue,
                       int width, MutableLineOf<T> out) {
    ForColumns<T>(0, width, [=]<int n>(LaneCount<n>, Index x) {
      const auto sum =
          DotPairs(Load<n>(redMinusGreen + x), mRed, Load<n>(blueMinusGreen + x), mBlue);
      Store(out + x, Narrowed(Quotient<kMatrixBits>(sum)));
    });
  }

  const ColourMatrix coefficients_;
  const bool fromPlanes_;
  const Input<T> red_;
  const Input<T> greenOfRed_;
  const Input<T> greenOfBlue_;
  const Input<T> blue_;
  const Input<T> redMinusGreen_;
  const Input<T> blueMinusGreen_;
  const Output<T> luminance_;
  const Output<T> first_;
  const Output<T> second_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_MATRIX4X3_INL_H

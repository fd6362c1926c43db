/// The two kinds of tone curve: what they yield, and curves that follow a given function.
#ifndef DEIMG_RAWFILE_TONE_CURVES_H
#define DEIMG_RAWFILE_TONE_CURVES_H

#include <functional>

#include "rawfile/tuning_block.h"

namespace deimg::rawfile {

/// Ends of the ranges over which curves are evaluated.
constexpr int kToneMinimum = -512;  // RGB curves; luminance curves begin at 0
constexpr int kToneMaximum = 8191;

/// The luminance curve at `input`, 0 to 8191.
int Evaluate(const LuminanceCurve& curve, int input);

/// The RGB curve at `input`, -512 to 8191.
int Evaluate(const RgbCurve& curve, int input);

/// Curves that follow `tone`, which maps 0 to 1 onto 0 to 1 and rises. An input of `white` is 1 and
/// yields 8160, which is 255 in eight bits; brighter inputs stay there. `white` is above 3312 and
/// divisible by 4.
LuminanceCurve FitLuminanceCurve(const std::function<double(double)>& tone, int white);
RgbCurve FitRgbCurve(const std::function<double(double)>& tone, int white);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_TONE_CURVES_H

/// Tone curves that follow a given function.
#ifndef DEIMG_RAWFILE_TONE_CURVES_H
#define DEIMG_RAWFILE_TONE_CURVES_H

#include <functional>

#include "props/tuning_block.h"

namespace deimg::rawfile {

/// Curves that follow `tone`, which maps 0 to 1 onto 0 to 1 and rises. An input of `white` is 1 and
/// yields 8160, which is 255 in eight bits; brighter inputs stay there. `white` is above 3312 and
/// divisible by 4.
LuminanceToneTuning FitLuminanceCurve(const std::function<double(double)>& tone, int white);
RgbToneTuning FitRgbCurve(const std::function<double(double)>& tone, int white);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_TONE_CURVES_H

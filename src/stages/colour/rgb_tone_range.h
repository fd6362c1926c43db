/// Range of the values that the tone curve of red, green and blue maps.
#ifndef DEIMG_STAGES_COLOUR_RGB_TONE_RANGE_H
#define DEIMG_STAGES_COLOUR_RGB_TONE_RANGE_H

#include "graph/line.h"

namespace deimg {

inline constexpr Sample kLowestLinear = -512;
inline constexpr Sample kHighestLinear = 8191;
inline constexpr int kRgbToneTableSize = kHighestLinear - kLowestLinear + 1;

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_RGB_TONE_RANGE_H

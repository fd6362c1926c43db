/// The tone curve of red, green and blue.
#ifndef DEIMG_STAGES_COLOUR_RGB_TONE_CURVE_H
#define DEIMG_STAGES_COLOUR_RGB_TONE_CURVE_H

#include "graph/line.h"
#include "props/tuning_block.h"
#include "stages/colour/rgb_tone_range.h"

namespace deimg {

/// The curve at x: seven quadratic segments whose starts and coefficients the record holds.
/// Results are signed 16-bit values.
[[nodiscard]] Sample RgbToneCurve(Sample x, const TuningBlock::Words<45>& record);

/// Fills a table of kRgbToneTableSize entries; entry i holds the curve at i + kLowestLinear.
void BuildRgbToneTable(const TuningBlock::Words<45>& record, std::int16_t* table);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_RGB_TONE_CURVE_H

/// The gain of colour differences over their strength.
#ifndef DEIMG_STAGES_COLOUR_CHROMA_GAIN_CURVE_H
#define DEIMG_STAGES_COLOUR_CHROMA_GAIN_CURVE_H

#include <array>
#include <cstdint>

#include "line/line.h"
#include "stages/segment_curve.h"

namespace deimg {

inline constexpr int kChromaGainTableSize = 256;
using ChromaGainSegments = SegmentCurve<4>;

/// Fills a table of kChromaGainTableSize gains by chroma / 32, kChromaGainOne = 1.0, from the seven
/// colour gains f0 to f6: f0 for weak chroma, through f1 at chroma f2, falling by f4 / 16 after it,
/// and by f6 / 64 less beyond f5. Returns its description.
ChromaGainSegments BuildChromaGainTable(const std::array<std::int16_t, 7>& f, Sample* table);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_CHROMA_GAIN_CURVE_H

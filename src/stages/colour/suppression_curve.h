/// Less colour where the picture is very dark or very bright: the gain over brightness.
#ifndef DEIMG_STAGES_COLOUR_SUPPRESSION_CURVE_H
#define DEIMG_STAGES_COLOUR_SUPPRESSION_CURVE_H

#include "base/result.h"
#include "line/line.h"
#include "props/tuning_block.h"
#include "stages/segment_curve.h"

namespace deimg {

inline constexpr int kSuppressionCurveSize = kHighestLevel + 1;
using SuppressionSegments = SegmentCurve<5>;

/// Fills a table of kSuppressionCurveSize gains, kChromaGainOne = 1.0: a dark ramp, full chroma,
/// and up to three falling segments, and describes them. DEIMG_UNSUPPORTED for a code that does not
/// exist.
[[nodiscard]] Result BuildSuppressionCurve(const ChromaSuppression& parameters, Sample* table,
                                           SuppressionSegments& segments);

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_SUPPRESSION_CURVE_H

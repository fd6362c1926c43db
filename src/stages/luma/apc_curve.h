/// The coring and gain curve of the aperture correction.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_H
#define DEIMG_STAGES_LUMA_APC_CURVE_H

#include "graph/kernels.h"
#include "props/tuning_block.h"

namespace deimg {

/// Eight words: knee1, knee2 (in units of 4), three slope codes, three offsets.
using ApcCurveParams = TuningBlock::Words<8>;

/// The curve of these parameters over the magnitudes 0 to `size` - 1 of samples divided by 2 to the
/// power of `shift`. The sign of a sample is kept.
[[nodiscard]] ApcSegments MakeApcCurve(const ApcCurveParams& params, int size, int shift);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_H

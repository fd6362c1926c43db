/// The coring and gain curve of the aperture corrections.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_H
#define DEIMG_STAGES_LUMA_APC_CURVE_H

#include "line/line.h"
#include "line/range.h"
#include "props/tuning_block.h"

namespace deimg {

/// A curve for samples divided by 2 to the power of `shift`: three straight segments over the
/// magnitudes 0 to `last`, meeting at two knees. A segment is (i x slope + offset) / 2048,
/// truncated, cut to 16 bits, and 0 where that is negative. An entry at a knee belongs to the later
/// segment. The sign of a sample is kept.
struct ApcSegments {
  int shift;
  Sample knee1;
  Sample knee2;
  Sample last;
  Sample slope[3];
  Sample offset[3];
  bool overflows;  // some entry does not fit in 16 bits
  bool isNarrow;   // 16 bits suffice to compute every entry
  Range values;    // of both signs
};

/// The curve of these parameters over `size` magnitudes.
[[nodiscard]] ApcSegments MakeApcCurve(const ApcCurveParams& params, int size, int shift);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_H

/// The gain of detail over brightness.
#ifndef DEIMG_STAGES_LUMA_DETAIL_GAIN_H
#define DEIMG_STAGES_LUMA_DETAIL_GAIN_H

#include "base/result.h"
#include "line/line.h"
#include "line/range.h"
#include "props/tuning_block.h"

namespace deimg {

/// The gain by brightness level, kChromaGainOne = 1.0: level x `rise` below `riseEnd`, then `hold`
/// below `holdEnd`, then `fall` for each level below `end`, and 0.
struct DetailGain {
  Sample rise;
  Sample riseEnd;
  Sample hold;
  Sample holdEnd;
  Sample fall;
  Sample end;
  Sample negativeScale;  // of darkening detail, kGainOne = 1.0

  Range range() const {
    return Either({0, std::max(hold, rise * riseEnd)}, {0, std::max(end, 0) * fall});
  }
};

/// The gain of a sensitivity class; DEIMG_UNSUPPORTED for a code or mode that does not exist.
[[nodiscard]] Result MakeDetailGain(const DetailGainTuning& tuning, std::size_t isoClass,
                                    DetailGain& gain);

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_DETAIL_GAIN_H

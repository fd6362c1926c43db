/// The coring and gain curve of the aperture correction.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_H
#define DEIMG_STAGES_LUMA_APC_CURVE_H

#include <cstdint>

#include "api/result.h"
#include "graph/line.h"
#include "props/tuning_block.h"
#include "storage/mem_block.h"

namespace deimg {

/// Eight words: knee1, knee2 (in units of 4), three slope codes, three offsets.
using ApcCurveParams = TuningBlock::Words<8>;

/// A curve as a table of magnitudes by magnitude; the sign of a sample is kept.
class ApcCurve {
 public:
  explicit operator bool() const { return static_cast<bool>(table_); }

  /// Builds a curve of `size` entries: three straight segments. DEIMG_OUT_OF_MEMORY.
  [[nodiscard]] Result Build(const ApcCurveParams& params, int size);

  /// Maps a line of samples divided by `divisor`, clamped to the curve. Source and destination may
  /// be the same line.
  void Apply(const Sample* source, Sample divisor, int width, Sample* destination) const;

  const std::int16_t* table() const { return table_.get(); }

 private:
  BlockOf<std::int16_t> table_;
  int size_ = 0;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_H

/// The coring and gain curve of the aperture correction.
#ifndef DEIMG_STAGES_LUMA_APC_CURVE_H
#define DEIMG_STAGES_LUMA_APC_CURVE_H

#include <cstdint>

#include "api/result.h"
#include "graph/kernels.h"
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

  /// In place: maps a line of samples divided by 2 to the power of `shift`, clamped to the curve.
  void Apply(const Kernels& kernels, int shift, int width, Sample* line) const;

  const Sample* table() const { return table_.get(); }

 private:
  BlockOf<Sample> table_;
  int size_ = 0;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_APC_CURVE_H

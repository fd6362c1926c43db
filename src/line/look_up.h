/// Look-up of samples in tables.
///
/// Look-ups have loops of their own, apart from the arithmetic around them. They are bound by loads
/// and stores, and no instruction level is better at them: one by one they take two thirds of the
/// time of collecting them into vectors.
#ifndef DEIMG_LINE_LOOK_UP_H
#define DEIMG_LINE_LOOK_UP_H

#include "line/line.h"

namespace deimg {

/// Replaces `width` samples by the entries of a table; `zero` is the entry of the sample 0. `in`
/// and `out` may be the same line. Narrow entries keep large tables in the first-level cache.
void LookUpLine(const NarrowSample* zero, const NarrowSample* in, int width, NarrowSample* out);
void LookUpLine(const Sample* zero, const Sample* in, int width, Sample* out);

}  // namespace deimg

#endif  // DEIMG_LINE_LOOK_UP_H

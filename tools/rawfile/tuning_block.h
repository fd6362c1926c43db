/// Tuning blocks to start from, and their words. The fields are those of the library's TuningBlock.
#ifndef DEIMG_RAWFILE_TUNING_BLOCK_H
#define DEIMG_RAWFILE_TUNING_BLOCK_H

#include "props/tuning_block.h"
#include "rawfile/words.h"

namespace deimg::rawfile {

/// Tuning that every stage accepts and that does as little as possible.
FilterTuning PlainFilter();
DetailTuning PlainDetail();
TuningBlock PlainTuning();

/// The words of the block; the ones no stage reads are `words`' unread ones.
void Append(const TuningBlock& block, WordWriter& words);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_TUNING_BLOCK_H

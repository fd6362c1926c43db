/// Changes of whole raw files that leave them consistent.
#ifndef DEIMG_FUZZ_FILE_MUTATOR_H
#define DEIMG_FUZZ_FILE_MUTATOR_H

#include "file_parts.h"

namespace deimg::fuzz {

/// Takes a file apart (properties as a tree of entries, coded data as blocks of symbols), changes
/// one thing that the seed says, and writes it again with sizes, offsets and bits in order. False
/// when the file cannot be taken apart, or is too large.
bool MutateFile(const Pieces& file, std::uint32_t seed, SplitFile& mutated);

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_FILE_MUTATOR_H

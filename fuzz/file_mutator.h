/// Changes to whole raw files that leave everything else in them consistent.
#ifndef DEIMG_FUZZ_FILE_MUTATOR_H
#define DEIMG_FUZZ_FILE_MUTATOR_H

#include "job.h"
#include "rawfile/bytes.h"

namespace deimg::fuzz {

/// A file whose top heap begins right behind the filler: what is in front of the filler (header,
/// low bits, coded data), and the heap.
struct FileParts {
  rawfile::Bytes front;
  rawfile::Bytes heap;
};

/// Takes the file apart, changes one thing in it, and writes it again: a word, the size, the place
/// or the sub-heap of a property; the geometry, with the low bits that belong to it; or a symbol of
/// the coded data. The same seed makes the same change.
/// @return false, and nothing changed, where the file is not like that or cannot be read.
bool MutateFile(const Pieces& file, unsigned seed, FileParts& parts);

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_FILE_MUTATOR_H

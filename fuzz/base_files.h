/// Small valid raw files for targets and corpora.
#ifndef DEIMG_FUZZ_BASE_FILES_H
#define DEIMG_FUZZ_BASE_FILES_H

#include "rawfile/random_camera.h"

namespace deimg::fuzz {

constexpr std::uint64_t kBaseFiles = 12;

/// A camera whose picture is a few hundred samples large; every third is large enough for previews.
/// The sensor data lie in front of the top heap.
inline rawfile::RawFile BaseFile(std::uint64_t seed) {
  rawfile::RandomLimits limits;
  limits.minWidth = seed % 3 == 2 ? 48 : 16;
  limits.minHeight = seed % 3 == 2 ? 24 : 8;
  limits.maxWidth = limits.minWidth + 8;
  limits.maxHeight = limits.minHeight + 4;
  rawfile::RawFile file = rawfile::RandomCamera(seed, limits);
  file.dataInHeader = true;
  return file;
}

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_BASE_FILES_H

/// Raw files of cameras that never existed: every value drawn at random, every file legal.
#ifndef DEIMG_RAWFILE_RANDOM_CAMERA_H
#define DEIMG_RAWFILE_RANDOM_CAMERA_H

#include "rawfile/raw_file.h"

namespace deimg::rawfile {

/// Bounds of the plane. Widths are even; the image area lies anywhere inside.
struct RandomLimits {
  uint32_t minWidth = 16, maxWidth = 160;
  uint32_t minHeight = 8, maxHeight = 128;
  /// The plane has at least 120 x 96 samples and its area 48 x 48, enough for previews and
  /// thumbnails.
  bool previewable = false;
};

/// A file that develops without an error for every job its size allows. The same seed gives the
/// same file on every machine.
///
/// Drawn are: byte order, place and order of everything in the file, sub-heaps, records longer than
/// needed, useless extra records, code set, skipped and stuffed bytes, geometry, samples, recorded
/// settings and the whole tuning. About a third of the cameras are wild: there a quarter of the
/// tuning values comes from the whole range of 16 bits wherever any value is legal.
RawFile RandomCamera(uint64_t seed, const RandomLimits& limits = {});

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_RANDOM_CAMERA_H

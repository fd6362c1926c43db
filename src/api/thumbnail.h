/// The thumbnail: a developed preview, resampled and letterboxed.
#ifndef DEIMG_API_THUMBNAIL_H
#define DEIMG_API_THUMBNAIL_H

#include <deimg/deimg.h>

#include <cstdint>

#include "storage/mem_block.h"

namespace deimg {

/// The thumbnail's pixels, three bytes each.
class ThumbnailBuffer {
 public:
  static constexpr int kRowBytes = 3 * DEIMG_THUMBNAIL_WIDTH;

  /// Makes it black; false when memory is short.
  [[nodiscard]] bool Allocate();

  /// Resamples a picture of `width` x `height` pixels, three bytes each, to the thumbnail's width
  /// by taking the nearest pixel to the left and above, centred between black bars (the odd line
  /// goes to the upper one). A picture taller than 4:3 is cut at the bottom.
  void Resample(const std::uint8_t* picture, int width, int height);

  std::uint8_t* row(int y) const { return pixels_.get() + y * kRowBytes; }

 private:
  BlockOf<std::uint8_t> pixels_;
};

}  // namespace deimg

#endif  // DEIMG_API_THUMBNAIL_H

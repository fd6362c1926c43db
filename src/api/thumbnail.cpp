#include "api/thumbnail.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/rounding.h"

namespace deimg {

bool ThumbnailBuffer::Allocate() {
  pixels_ = BlockOf<std::uint8_t>::Zeroed(DEIMG_THUMBNAIL_HEIGHT * kRowBytes);
  return static_cast<bool>(pixels_);
}

void ThumbnailBuffer::Resample(const std::uint8_t* picture, int width, int height) {
  // Kept in single precision, so that every machine picks the same pixels.
  const double scale = static_cast<float>(width / static_cast<double>(DEIMG_THUMBNAIL_WIDTH));
  const int padTotal = std::max(Truncated(DEIMG_THUMBNAIL_HEIGHT - height / scale), 0);
  const int bottomPad = padTotal / 2;
  const int topPad = padTotal - bottomPad;
  for (int y = 0; y < DEIMG_THUMBNAIL_HEIGHT - padTotal; ++y) {
    const int sy = std::min(Truncated(y * scale), height - 1);
    for (int x = 0; x < DEIMG_THUMBNAIL_WIDTH; ++x) {
      const int sx = std::min(Truncated(x * scale), width - 1);
      const std::size_t pixel = static_cast<std::size_t>(sy) * static_cast<std::size_t>(width) +
                                static_cast<std::size_t>(sx);
      std::memcpy(row(topPad + y) + 3 * x, picture + 3 * pixel, 3);
    }
  }
}

}  // namespace deimg

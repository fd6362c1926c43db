#include "api/thumbnail.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "graph/rounding.h"

namespace deimg {

void ResampleThumbnail(const std::uint8_t* picture, int width, int height,
                       std::uint8_t* thumbnail) {
  // Kept in single precision, so that every machine picks the same pixels.
  const double scale = static_cast<float>(width / static_cast<double>(kThumbnailWidth));
  const int padTotal = std::max(Truncated(kThumbnailHeight - height / scale), 0);
  const int bottomPad = padTotal / 2;
  const int topPad = padTotal - bottomPad;
  for (int y = 0; y < kThumbnailHeight - padTotal; ++y) {
    const int sy = std::min(Truncated(y * scale), height - 1);
    std::uint8_t* const row = thumbnail + (topPad + y) * kThumbnailRowBytes;
    for (int x = 0; x < kThumbnailWidth; ++x) {
      const int sx = std::min(Truncated(x * scale), width - 1);
      const std::size_t pixel = static_cast<std::size_t>(sy) * static_cast<std::size_t>(width) +
                                static_cast<std::size_t>(sx);
      std::memcpy(row + 3 * x, picture + 3 * pixel, 3);
    }
  }
}

}  // namespace deimg

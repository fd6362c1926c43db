#include "yardstick.h"

namespace deimg::bench {

void Yardstick(const std::uint16_t* mosaic, int width, int height, std::uint16_t* rgb) {
  const auto put = [](std::uint16_t* pixel, int r, int g, int b) {
    pixel[0] = static_cast<std::uint16_t>(r);
    pixel[1] = static_cast<std::uint16_t>(g);
    pixel[2] = static_cast<std::uint16_t>(b);
  };
  for (int y = 2; y + 2 < height; y += 2) {
    for (int x = 2; x + 2 < width; x += 2) {
      const std::uint16_t* const m = mosaic + y * width + x;  // red site
      const auto at = [m, width](int dx, int dy) { return int{m[dy * width + dx]}; };
      std::uint16_t* const top = rgb + 3 * (y * width + x);
      std::uint16_t* const bottom = top + 3 * width;
      put(top, at(0, 0), (at(-1, 0) + at(1, 0) + at(0, -1) + at(0, 1)) >> 2,
          (at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1)) >> 2);
      put(top + 3, (at(0, 0) + at(2, 0)) >> 1, at(1, 0), (at(1, -1) + at(1, 1)) >> 1);
      put(bottom, (at(0, 0) + at(0, 2)) >> 1, at(0, 1), (at(-1, 1) + at(1, 1)) >> 1);
      put(bottom + 3, (at(0, 0) + at(2, 0) + at(0, 2) + at(2, 2)) >> 2,
          (at(0, 1) + at(2, 1) + at(1, 0) + at(1, 2)) >> 2, at(1, 1));
    }
  }
}

}  // namespace deimg::bench

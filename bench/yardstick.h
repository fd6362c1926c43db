/// What every time is compared with.
#ifndef DEIMG_BENCH_YARDSTICK_H
#define DEIMG_BENCH_YARDSTICK_H

#include <cstdint>

namespace deimg::bench {

/// One Q: a plain scalar bilinear demosaic of a mosaic to 16-bit RGB, 2 x 2 cells, no branch per
/// pixel. Speeds of a shared machine swing; quotients of two loops that take turns do not.
void Yardstick(const std::uint16_t* mosaic, int width, int height, std::uint16_t* rgb);

}  // namespace deimg::bench

#endif  // DEIMG_BENCH_YARDSTICK_H

/// A picture reduced to fit a square box.
#ifndef DEIMG_TOOLS_DEIMG_SCALED_PICTURE_HPP
#define DEIMG_TOOLS_DEIMG_SCALED_PICTURE_HPP

#include <deimg/streams.hpp>
#include <vector>

#include "raw_info.hpp"

namespace deimg::cli {

/// The largest size with the shape of `size` that fits a box of `box` by `box`; never enlarged.
PictureSize FitInto(PictureSize size, uint32_t box);

/// Scales 8-bit pictures down: every pixel is the rounded mean of the source pixels it covers,
/// those at the edges counted by the share that is covered.
std::vector<std::byte> ScaleDown(std::span<const std::byte> samples, PictureSize from,
                                 PictureSize to);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_SCALED_PICTURE_HPP

/// The thumbnail: a developed preview, resampled and letterboxed.
#ifndef DEIMG_API_THUMBNAIL_H
#define DEIMG_API_THUMBNAIL_H

#include <cstdint>

namespace deimg {

inline constexpr int kThumbnailWidth = 160;
inline constexpr int kThumbnailHeight = 120;
inline constexpr int kThumbnailRowBytes = 3 * kThumbnailWidth;
inline constexpr int kThumbnailBytes = kThumbnailHeight * kThumbnailRowBytes;

/// Resamples a picture of `width` x `height` pixels, three bytes each, to the thumbnail's width by
/// taking the nearest pixel to the left and above, centred between black bars (the odd line goes to
/// the upper one). A picture taller than 4:3 is cut at the bottom. `thumbnail` is zeroed.
void ResampleThumbnail(const std::uint8_t* picture, int width, int height, std::uint8_t* thumbnail);

}  // namespace deimg

#endif  // DEIMG_API_THUMBNAIL_H

/// Turns pictures into what the sensor of the natural camera would have recorded.
#ifndef DEIMG_RAWFILE_MOSAIC_H
#define DEIMG_RAWFILE_MOSAIC_H

#include "rawfile/picture.h"
#include "rawfile/raw_file.h"

namespace deimg::rawfile {

/// Columns and lines of the plane around a picture, at least.
constexpr uint32_t kPictureBorder = 8;

/// Sets the file's plane and geometry so that the image area, developed as recorded, shows the
/// picture. Outside, the picture's edge is repeated.
///
/// What development does to a flat field is undone pixel by pixel: tone curves, luminance made from
/// linear light, luminance correction of strong colours, the sensor's paleness, white-balance
/// gains, black levels. Hue correction and chroma gains are taken to change nothing, which holds
/// for NaturalProperties() at matrix and colour level 0. A few of the strongest colours have no
/// sensor value that gives them back exactly.
/// @throws WriteError when the picture is empty or larger than a plane can be.
void SetPicture(const PictureSource& picture, RawFile& file);

/// A file of the natural camera, as recorded with its default settings, that shows the picture.
RawFile PictureFile(const PictureSource& picture);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_MOSAIC_H

/// Reads the picture files deimg-mkraw takes.
#ifndef DEIMG_MKRAW_PICTURE_FILE_H
#define DEIMG_MKRAW_PICTURE_FILE_H

#include "rawfile/picture.h"

namespace deimg::mkraw {

/// A PNG (any kind; transparent parts on white) or binary PPM file, recognised by its contents.
/// @throws std::runtime_error with a message that names the file.
rawfile::Picture ReadPicture(const std::string& path);

}  // namespace deimg::mkraw

#endif  // DEIMG_MKRAW_PICTURE_FILE_H

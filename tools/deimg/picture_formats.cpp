#include "picture_formats.hpp"

#include <strings.h>

#include <algorithm>
#include <cctype>

namespace deimg::cli {

WriterMaker MakePngWriter, MakeTiffWriter, MakeJpegWriter, MakePpmWriter;

const std::vector<PictureFormat>& PictureFormats() {
  using enum FormatTrait;
  static const std::vector<PictureFormat> formats = {
      {"png", {"png"}, {8, 16}, {}, MakePngWriter},
      {"tiff", {"tif", "tiff"}, {8, 16}, {kGoesBack}, MakeTiffWriter},
      {"jpeg", {"jpg", "jpeg"}, {8}, {kQuality}, MakeJpegWriter},
      {"ppm", {"ppm"}, {8, 16}, {}, MakePpmWriter},
  };
  return formats;
}

std::string PictureFormat::Title() const {
  std::string title = name;
  for (char& c : title) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return title;
}

const PictureFormat* FindFormat(const std::string& nameOrExtension) {
  const auto same = [&](const std::string& word) {
    return strcasecmp(word.c_str(), nameOrExtension.c_str()) == 0;
  };
  for (const PictureFormat& format : PictureFormats()) {
    if (same(format.name) || std::ranges::any_of(format.extensions, same)) return &format;
  }
  return nullptr;
}

}  // namespace deimg::cli

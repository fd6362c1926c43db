#include "picture_writer.hpp"

#include <algorithm>
#include <cctype>

namespace deimg::cli {

std::unique_ptr<PictureWriter> MakeWriter(PictureFormat format, std::FILE* file,
                                          const PictureHeader& header) {
  switch (format) {
    case PictureFormat::kTiff:
      return MakeTiffWriter(file, header);
    case PictureFormat::kJpeg:
      return MakeJpegWriter(file, header);
    case PictureFormat::kPpm:
      return MakePpmWriter(file, header);
    case PictureFormat::kPng:
      break;
  }
  return MakePngWriter(file, header);
}

bool NeedsSeeking(PictureFormat format) { return format == PictureFormat::kTiff; }

std::string_view Extension(PictureFormat format) {
  switch (format) {
    case PictureFormat::kTiff:
      return "tif";
    case PictureFormat::kJpeg:
      return "jpg";
    case PictureFormat::kPpm:
      return "ppm";
    case PictureFormat::kPng:
      break;
  }
  return "png";
}

std::optional<PictureFormat> FormatOfExtension(std::string_view extension) {
  std::string lower(extension);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (lower == "png") return PictureFormat::kPng;
  if (lower == "tif" || lower == "tiff") return PictureFormat::kTiff;
  if (lower == "jpg" || lower == "jpeg") return PictureFormat::kJpeg;
  if (lower == "ppm") return PictureFormat::kPpm;
  return std::nullopt;
}

std::string SoftwareName() { return "deimg " DEIMG_VERSION; }

}  // namespace deimg::cli

#include "mkraw/picture_file.h"

#include <png.h>

#include <fstream>
#include <stdexcept>

namespace deimg::mkraw {
namespace {

constexpr uint64_t kMaximumSide = 65535;

[[noreturn]] void Fail(const std::string& path, const std::string& what) {
  throw std::runtime_error(path + ": " + what);
}

rawfile::Picture ReadPng(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) Fail(path, image.message);
  image.format = PNG_FORMAT_RGB;
  if (image.width > kMaximumSide || image.height > kMaximumSide) {
    png_image_free(&image);
    Fail(path, "larger than a sensor plane can be");
  }
  rawfile::Picture picture{image.width, image.height, {}};
  picture.rgb.resize(PNG_IMAGE_SIZE(image));
  const png_color white = {255, 255, 255};
  if (png_image_finish_read(&image, &white, picture.rgb.data(), 0, nullptr) == 0) {
    Fail(path, image.message);
  }
  return picture;
}

/// The next number of a PPM header; comments run from '#' to the end of the line.
uint64_t ReadNumber(std::istream& in) {
  while ((in >> std::ws) && in.peek() == '#') in.ignore(1 << 20, '\n');
  uint64_t number = 0;
  in >> number;
  return number;
}

rawfile::Picture ReadPpm(const std::string& path, std::istream& in) {
  const uint64_t width = ReadNumber(in), height = ReadNumber(in), maximum = ReadNumber(in);
  in.get();  // the one blank before the samples
  if (!in || width == 0 || height == 0) Fail(path, "broken PPM header");
  if (width > kMaximumSide || height > kMaximumSide) {
    Fail(path, "larger than a sensor plane can be");
  }
  if (maximum != 255) Fail(path, "only PPM files with 8 bits per sample (maximum 255) are read");
  rawfile::Picture picture{static_cast<uint32_t>(width), static_cast<uint32_t>(height), {}};
  picture.rgb.resize(size_t{3} * picture.width * picture.height);
  in.read(reinterpret_cast<char*>(picture.rgb.data()),
          static_cast<std::streamsize>(picture.rgb.size()));
  if (!in) Fail(path, "the file ends too early");
  return picture;
}

}  // namespace

rawfile::Picture ReadPicture(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char mark[2] = {};
  if (!in.read(mark, sizeof mark)) Fail(path, "cannot be read");
  if (mark[0] == 'P' && mark[1] == '6') return ReadPpm(path, in);
  if (mark[0] == '\x89' && mark[1] == 'P') return ReadPng(path);
  Fail(path, "neither a PNG nor a binary PPM (P6) file");
}

}  // namespace deimg::mkraw

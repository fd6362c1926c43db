/// Pictures as the writer takes them: line after line of 8-bit red, green, blue.
#ifndef DEIMG_RAWFILE_PICTURE_H
#define DEIMG_RAWFILE_PICTURE_H

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace deimg::rawfile {

/// A picture that is made or read line by line; large ones are never held as a whole.
struct PictureSource {
  uint32_t width = 0;
  uint32_t height = 0;
  /// Fills `line` (3 * width bytes) with line y; called in any order.
  std::function<void(uint32_t y, std::span<uint8_t> line)> readLine;
};

/// A picture in memory: height * width * 3 bytes.
struct Picture {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> rgb;
};

/// The lines of a picture, which has to outlive the source.
PictureSource SourceOf(const Picture& picture);

/// The built-in scenes, of any size and the same everywhere: "chart" (grey ramp and steps, colours,
/// lines, zone plate), "gradient" (smooth shades), "texture" (fine irregular detail).
/// @throws WriteError for any other name.
PictureSource MakeScene(const std::string& name, uint32_t width, uint32_t height);

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_PICTURE_H

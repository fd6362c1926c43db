/// A picture being encoded: each writer takes finished lines and encodes them as they come.
#ifndef DEIMG_TOOLS_DEIMG_PICTURE_WRITER_HPP
#define DEIMG_TOOLS_DEIMG_PICTURE_WRITER_HPP

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace deimg::cli {

/// What is known about a picture before its first line.
struct PictureHeader {
  uint32_t width = 0;
  uint32_t height = 0;
  int depth = 8;              ///< bits per sample: 8 or 16
  int quality = 92;           ///< 1 to 100, for formats that have it
  unsigned resolution = 300;  ///< pixels per inch, recorded for printing
};

/// Encodes one picture. Colours are sRGB. Every operation throws Failure when the file cannot be
/// written.
class PictureWriter {
 public:
  virtual ~PictureWriter() = default;
  /// One line, top line first: red, green, blue interleaved; 16-bit samples low byte first.
  virtual void WriteLine(std::span<const std::byte> line) = 0;
  /// Writes what follows the last line. The picture is incomplete without it.
  virtual void Finish() = 0;
};

/// Makes a writer on `file`, which stays the caller's. Every format has one in its own source file.
using WriterMaker = std::unique_ptr<PictureWriter>(std::FILE* file, const PictureHeader& header);

/// A writer that encodes with `writer` on a thread of its own, so that the caller goes on with the
/// next lines meanwhile. A failure shows in a later call. Memory is bounded.
std::unique_ptr<PictureWriter> MakePipelinedWriter(std::unique_ptr<PictureWriter> writer);

/// Name and version of this program, as recorded in pictures.
inline std::string SoftwareName() { return "deimg " DEIMG_VERSION; }

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_PICTURE_WRITER_HPP

#include <cerrno>
#include <vector>

#include "failure.hpp"
#include "picture_writer.hpp"

namespace deimg::cli {
namespace {

constexpr const char* kDoing = "writing the PPM data";

/// Binary portable pixmap: a line of text, then the samples, 16-bit ones high byte first.
class PpmWriter final : public PictureWriter {
 public:
  PpmWriter(std::FILE* file, const PictureHeader& header) : file_(file), wide_(header.depth == 16) {
    if (std::fprintf(file_, "P6\n%u %u\n%d\n", header.width, header.height, wide_ ? 65535 : 255) <
        0) {
      throw Failure::System(kDoing, errno);
    }
  }

  void WriteLine(std::span<const std::byte> line) override {
    if (wide_) {
      swapped_.resize(line.size());
      for (size_t i = 0; i + 1 < line.size(); i += 2) {
        swapped_[i] = line[i + 1];
        swapped_[i + 1] = line[i];
      }
      line = swapped_;
    }
    if (std::fwrite(line.data(), 1, line.size(), file_) != line.size()) {
      throw Failure::System(kDoing, errno);
    }
  }

  void Finish() override {}

 private:
  std::FILE* file_;
  bool wide_;
  std::vector<std::byte> swapped_;
};

}  // namespace

std::unique_ptr<PictureWriter> MakePpmWriter(std::FILE* file, const PictureHeader& header) {
  return std::make_unique<PpmWriter>(file, header);
}

}  // namespace deimg::cli

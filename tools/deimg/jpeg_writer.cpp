#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <deimg/streams.hpp>
#include <vector>

// These need <cstdio> before them.
#include <jpeglib.h>

#include <jerror.h>

#include "failure.hpp"
#include "picture_writer.hpp"
#include "srgb_profile.hpp"

namespace deimg::cli {
namespace {

constexpr const char* kDoing = "writing the JPEG data";
constexpr int kFullColourQuality = 90;  // from here on colour keeps its full resolution

/// libjpeg reports errors through a callback that must not return; ours jumps back, so the
/// functions that call the library hold no objects with destructors.
class JpegWriter final : public PictureWriter {
 public:
  JpegWriter(std::FILE* file, const PictureHeader& header)
      : profile_(SrgbProfile()), software_(SoftwareName()) {
    jpeg_.err = jpeg_std_error(&errors_);
    errors_.error_exit = OnError;
    errors_.output_message = [](j_common_ptr) {};
    jpeg_.client_data = this;
    Start(file, header);
  }
  ~JpegWriter() override { jpeg_destroy_compress(&jpeg_); }
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;

  void WriteLine(std::span<const std::byte> line) override {
    if (setjmp(jump_)) Throw();
    JSAMPROW row = reinterpret_cast<JSAMPROW>(const_cast<std::byte*>(line.data()));
    jpeg_write_scanlines(&jpeg_, &row, 1);
  }

  void Finish() override {
    if (setjmp(jump_)) Throw();
    jpeg_finish_compress(&jpeg_);
  }

 private:
  void Start(std::FILE* file, const PictureHeader& header) {
    if (setjmp(jump_)) {
      jpeg_destroy_compress(&jpeg_);
      Throw();
    }
    jpeg_create_compress(&jpeg_);
    jpeg_stdio_dest(&jpeg_, file);
    jpeg_.image_width = header.width;
    jpeg_.image_height = header.height;
    jpeg_.input_components = 3;
    jpeg_.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg_);
    jpeg_set_quality(&jpeg_, header.quality, TRUE);
    if (header.quality >= kFullColourQuality) {
      jpeg_.comp_info[0].h_samp_factor = 1;
      jpeg_.comp_info[0].v_samp_factor = 1;
    }
    jpeg_.density_unit = 1;  // per inch
    jpeg_.X_density = jpeg_.Y_density = static_cast<UINT16>(header.resolution);
    jpeg_start_compress(&jpeg_, TRUE);
    jpeg_write_icc_profile(&jpeg_, profile_.data(), static_cast<unsigned>(profile_.size()));
    jpeg_write_marker(&jpeg_, JPEG_COM, reinterpret_cast<const JOCTET*>(software_.data()),
                      static_cast<unsigned>(software_.size()));
  }

  [[noreturn]] void Throw() const {
    if (error_ != 0) throw Failure::System(kDoing, error_);
    throw Failure(kDoing, message_, host::kCallbackFailed);
  }
  static void OnError(j_common_ptr jpeg) {
    auto& self = *static_cast<JpegWriter*>(jpeg->client_data);
    self.error_ = self.errors_.msg_code == JERR_FILE_WRITE ? errno : 0;
    self.errors_.format_message(jpeg, self.message_);
    std::longjmp(self.jump_, 1);
  }

  std::vector<unsigned char> profile_;
  std::string software_;
  jpeg_compress_struct jpeg_{};
  jpeg_error_mgr errors_{};
  std::jmp_buf jump_{};
  int error_ = 0;
  char message_[JMSG_LENGTH_MAX] = "";
};

}  // namespace

std::unique_ptr<PictureWriter> MakeJpegWriter(std::FILE* file, const PictureHeader& header) {
  return std::make_unique<JpegWriter>(file, header);
}

}  // namespace deimg::cli

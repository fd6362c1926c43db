#include "commands.hpp"
#include "picture_command.hpp"

namespace deimg::cli {
namespace {

constexpr unsigned kLargestSize = 4096;

}  // namespace

void AddThumbnailCommand(CLI::App& program, Action& action) {
  const auto [command, state] = AddCommand<PictureCommand>(
      program, action, "thumbnail", "Develop thumbnails for file lists and desktops");
  state.kind = DEIMG_JOB_THUMBNAIL;
  state.suffix = "-thumbnail";
  command
      .add_option_function<unsigned>(
          "--size",
          [&thumbnail = state](unsigned size) {
            // Without bars it is the preview, scaled down.
            thumbnail.kind = DEIMG_JOB_PREVIEW;
            thumbnail.box = size;
          },
          "Fit into N x N pixels, in the picture's own shape and never larger than the preview. "
          "Default: 160 x 120 with black bars")
      ->type_name("N")
      ->check(CLI::Range(1U, kLargestSize).description(""))
      ->group("Output");
  state.AddTo(command, false);
  command.footer(
      "Examples:\n"
      "  deimg thumbnail photo.raw                   writes photo-thumbnail.png beside it\n"
      "  deimg thumbnail *.raw --size 256 -o thumbnails/");
}

}  // namespace deimg::cli

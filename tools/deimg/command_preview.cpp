#include "commands.hpp"
#include "picture_command.hpp"

namespace deimg::cli {

void AddPreviewCommand(CLI::App& program, Action& action) {
  const auto [command, state] = AddCommand<PictureCommand>(
      program, action, "preview",
      "Develop small pictures, one sixth in each direction, in a fraction of the time");
  state.kind = DEIMG_JOB_PREVIEW;
  state.suffix = "-preview";
  state.AddTo(command, false);
  command.footer(
      "Examples:\n"
      "  deimg preview photo.raw                     writes photo-preview.png beside it\n"
      "  deimg preview *.raw -o previews/ --format jpeg");
}

}  // namespace deimg::cli

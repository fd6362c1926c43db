#include "commands.hpp"
#include "picture_command.hpp"

namespace deimg::cli {

void AddDevelopCommand(CLI::App& program, Action& action) {
  const auto [command, state] =
      AddCommand<PictureCommand>(program, action, "develop", "Develop raw files into pictures");
  state.AddTo(command, true);
  command
      .add_flag_callback(
          "--quick", [&kind = state.kind] { kind = DEIMG_JOB_QUICK; },
          "Full size with the quick settings: processing set quick, no colour median")
      ->group("Picture");
  command.footer(
      "Examples:\n"
      "  deimg develop photo.raw                     writes photo.png beside it\n"
      "  deimg develop *.raw -o pictures/ --depth 16 --format tiff\n"
      "  deimg develop photo.raw --wb point:812,340 --exposure +0.7 -o warm.jpg\n"
      "  deimg develop - -o - < photo.raw | other-program");
}

}  // namespace deimg::cli

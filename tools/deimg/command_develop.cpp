#include <memory>

#include "batch.hpp"
#include "commands.hpp"
#include "develop_file.hpp"

namespace deimg::cli {
namespace {

struct DevelopCommand {
  std::vector<std::string> files;
  OutputOptions output;
  Settings settings;
  BatchOptions batch;
  bool quick = false;

  int Run() const {
    const OutputPlan plan = PlanOutputs(files, output, "");
    const DEImgJob kind = quick ? DEIMG_JOB_QUICK : DEIMG_JOB_FULL;
    return RunBatch(plan.jobs, batch, "developed",
                    [&](const Job& job, const host::ProgressCallback& progress) {
                      return DevelopFile(job, kind, plan.format, output, settings, progress);
                    });
  }
};

}  // namespace

void AddDevelopCommand(CLI::App& program, Action& action) {
  CLI::App& command = *program.add_subcommand("develop", "Develop raw files into pictures");
  const auto state = std::make_shared<DevelopCommand>();
  AddFiles(command, state->files);
  state->output.AddTo(command, true);
  state->settings.AddTo(command, true);
  command
      .add_flag("--quick", state->quick,
                "Full size with the quick settings: processing set quick, no colour median")
      ->group("Picture");
  state->batch.AddTo(command);
  command.footer(
      "Examples:\n"
      "  deimg develop photo.raw                     writes photo.png beside it\n"
      "  deimg develop *.raw -o pictures/ --depth 16 --format tiff\n"
      "  deimg develop photo.raw --wb point:812,340 --exposure +0.7 -o warm.jpg\n"
      "  deimg develop - -o - < photo.raw | other-program");
  command.callback([state, &action] { action = [state] { return state->Run(); }; });
}

}  // namespace deimg::cli

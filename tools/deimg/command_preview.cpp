#include <memory>

#include "batch.hpp"
#include "commands.hpp"
#include "develop_file.hpp"

namespace deimg::cli {
namespace {

struct PreviewCommand {
  std::vector<std::string> files;
  OutputOptions output;
  Settings settings;
  BatchOptions batch;

  int Run() const {
    const OutputPlan plan = PlanOutputs(files, output, "-preview");
    return RunBatch(
        plan.jobs, batch, "developed", [&](const Job& job, const host::ProgressCallback& progress) {
          return DevelopFile(job, DEIMG_JOB_PREVIEW, plan.format, output, settings, progress);
        });
  }
};

}  // namespace

void AddPreviewCommand(CLI::App& program, Action& action) {
  CLI::App& command = *program.add_subcommand(
      "preview", "Develop small pictures, one sixth in each direction, in a fraction of the time");
  const auto state = std::make_shared<PreviewCommand>();
  AddFiles(command, state->files);
  state->output.AddTo(command, false);
  state->settings.AddTo(command, false);
  state->batch.AddTo(command);
  command.footer(
      "Examples:\n"
      "  deimg preview photo.raw                     writes photo-preview.png beside it\n"
      "  deimg preview *.raw -o previews/ --format jpeg");
  command.callback([state, &action] { action = [state] { return state->Run(); }; });
}

}  // namespace deimg::cli

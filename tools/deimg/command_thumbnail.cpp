#include <memory>

#include "batch.hpp"
#include "commands.hpp"
#include "develop_file.hpp"
#include "interrupt.hpp"
#include "output_file.hpp"
#include "raw_input.hpp"
#include "scaled_picture.hpp"

namespace deimg::cli {
namespace {

constexpr unsigned kLargestSize = 4096;

struct ThumbnailCommand {
  std::vector<std::string> files;
  OutputOptions output;
  Settings settings;
  BatchOptions batch;
  unsigned size = 0;  ///< 0: the library's own thumbnail

  int Run() const {
    const OutputPlan plan = PlanOutputs(files, output, "-thumbnail");
    return RunBatch(
        plan.jobs, batch, "developed", [&](const Job& job, const host::ProgressCallback& progress) {
          if (size > 0) return MakeScaled(job, plan.format, progress);
          return DevelopFile(job, DEIMG_JOB_THUMBNAIL, plan.format, output, settings, progress);
        });
  }

  /// A thumbnail without bars: the preview, scaled down to fit.
  Outcome MakeScaled(const Job& job, PictureFormat format,
                     const host::ProgressCallback& progress) const {
    if (output.skipExisting && job.output != "-" && Exists(job.output)) return Outcome::kSkipped;
    const std::unique_ptr<host::Input> raw = OpenRaw(job.input);
    const RawInfo info = ReadRawInfo(*raw);
    RequireSupported(info, DEIMG_JOB_PREVIEW);
    settings.RequireFits(info);
    host::Options options;
    options.job = DEIMG_JOB_PREVIEW;
    options.settings = settings.params;
    options.progress = progress;
    options.cancel = &CancelFlag();
    const PictureSize from = SizeOf(info, DEIMG_JOB_PREVIEW);
    const PictureSize to = FitInto(from, size);
    WritePicture(job, format, output, to, [&](const host::LineCallback& line) {
      const host::Picture preview = host::Develop(*raw, options);
      const std::vector<std::byte> scaled = ScaleDown(preview.samples, from, to);
      const size_t lineBytes = size_t{to.width} * 3;
      for (size_t y = 0; y < to.height; ++y) line({scaled.data() + y * lineBytes, lineBytes});
    });
    return Outcome::kDone;
  }
};

}  // namespace

void AddThumbnailCommand(CLI::App& program, Action& action) {
  CLI::App& command =
      *program.add_subcommand("thumbnail", "Develop thumbnails for file lists and desktops");
  const auto state = std::make_shared<ThumbnailCommand>();
  AddFiles(command, state->files);
  command
      .add_option("--size", state->size,
                  "Fit into N x N pixels, in the picture's own shape and never larger than the "
                  "preview. Default: 160 x 120 with black bars")
      ->type_name("N")
      ->check(CLI::Range(1U, kLargestSize).description(""))
      ->group("Output");
  state->output.AddTo(command, false);
  state->settings.AddTo(command, false);
  state->batch.AddTo(command);
  command.footer(
      "Examples:\n"
      "  deimg thumbnail photo.raw                   writes photo-thumbnail.png beside it\n"
      "  deimg thumbnail *.raw --size 256 -o thumbnails/");
  command.callback([state, &action] { action = [state] { return state->Run(); }; });
}

}  // namespace deimg::cli

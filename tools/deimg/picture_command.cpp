#include "picture_command.hpp"

#include "commands.hpp"
#include "interrupt.hpp"
#include "output_file.hpp"
#include "raw_input.hpp"
#include "scaled_picture.hpp"

namespace deimg::cli {

void PictureCommand::AddTo(CLI::App& command, bool full) {
  AddFiles(command, files);
  output.AddTo(command, full);
  settings.AddTo(command, full);
  batch.AddTo(command);
}

int PictureCommand::Run() const {
  const OutputPlan plan = PlanOutputs(files, output, suffix);
  const host::DevelopFunction function = batch.FunctionFor(plan.jobs.size());
  return RunBatch(plan.jobs, batch, "developed",
                  [&](const Job& job, const host::ProgressCallback& progress) {
                    return Develop(job, *plan.format, function, progress);
                  });
}

Outcome PictureCommand::Develop(const Job& job, const PictureFormat& format,
                                const host::DevelopFunction& function,
                                const host::ProgressCallback& progress) const {
  if (output.skipExisting && job.output != "-" && Exists(job.output)) return Outcome::kSkipped;
  const std::unique_ptr<host::Input> raw = OpenRaw(job.input);
  const RawInfo info = ReadRawInfo(*raw);
  RequireSupported(info, kind);
  settings.RequireFits(info);
  const PictureSize developed = SizeOf(info, kind);
  const PictureSize written = box > 0 ? FitInto(developed, box) : developed;

  OutputFile file(job.output, output.force, format.traits.contains(FormatTrait::kGoesBack));
  PictureHeader header = output.header;
  header.width = written.width;
  header.height = written.height;
  const auto writer = MakePipelinedWriter(format.makeWriter(file.file(), header));

  host::Options options;
  options.job = kind;
  options.format = header.depth == 16 ? DEIMG_FORMAT_16BIT : DEIMG_FORMAT_8BIT;
  options.settings = settings.params;
  options.progress = progress;
  options.cancel = &CancelFlag();
  options.function = function;
  if (box > 0) {
    const host::Picture picture = host::Develop(*raw, options);
    const std::vector<std::byte> scaled = ScaleDown(picture.samples, developed, written);
    const std::span<const std::byte> samples = scaled;
    const size_t lineBytes = size_t{written.width} * 3;
    for (size_t y = 0; y < written.height; ++y) {
      writer->WriteLine(samples.subspan(y * lineBytes, lineBytes));
    }
  } else {
    host::Develop(*raw, options, [&](std::span<const std::byte> line) { writer->WriteLine(line); });
  }
  writer->Finish();
  file.Commit();
  return Outcome::kDone;
}

}  // namespace deimg::cli

#include "batch.hpp"
#include "commands.hpp"
#include "failure.hpp"
#include "interrupt.hpp"
#include "plane_check.hpp"
#include "raw_input.hpp"

namespace deimg::cli {
namespace {

struct CheckCommand {
  std::vector<std::string> files;
  BatchOptions batch;

  int Run() const {
    std::vector<Job> jobs;
    for (const std::string& file : files) jobs.push_back({file, ""});
    const host::DevelopFunction function = batch.FunctionFor(jobs.size());
    return RunBatch(jobs, batch, "sound",
                    [&](const Job& job, const host::ProgressCallback& progress) {
                      return Check(job, function, progress);
                    });
  }

  /// Everything that developing the file would do, and a look at the sensor data that development
  /// does not take: it clips impossible values.
  static Outcome Check(const Job& job, const host::DevelopFunction& function,
                       const host::ProgressCallback& progress) {
    const std::unique_ptr<host::Input> raw = OpenRaw(job.input);
    const RawInfo info = ReadRawInfo(*raw);
    RequireSupported(info, DEIMG_JOB_FULL);
    RequirePlausibleSamples(*raw, info);

    const PictureSize size = SizeOf(info, DEIMG_JOB_FULL);
    uint64_t bytes = 0;
    host::Options options;
    options.progress = progress;
    options.cancel = &CancelFlag();
    options.function = function;
    host::Develop(*raw, options, [&](std::span<const std::byte> line) { bytes += line.size(); });
    if (bytes != uint64_t{size.width} * size.height * 3) {
      throw Failure("developing", "the picture came out incomplete", DEIMG_BAD_DATA);
    }
    return Outcome::kDone;
  }
};

}  // namespace

void AddCheckCommand(CLI::App& program, Action& action) {
  const auto [command, state] = AddCommand<CheckCommand>(
      program, action, "check",
      "Decode and develop raw files without writing anything, and say what is wrong");
  AddFiles(command, state.files);
  state.batch.AddTo(command);
  command.footer(
      "Examples:\n"
      "  deimg check archive/*.raw\n"
      "  find archive -name '*.raw' -print0 | xargs -0 deimg check --progress none");
}

}  // namespace deimg::cli

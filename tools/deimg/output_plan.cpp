#include "output_plan.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "failure.hpp"
#include "help_formatter.hpp"
#include "output_file.hpp"

namespace deimg::cli {
namespace {

constexpr unsigned kHighestResolution = 65535;

bool IsDirectory(const std::string& name) {
  struct stat status {};
  return stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// What tells one file from all others, whatever its names; none for what is no file on disk.
std::optional<std::pair<dev_t, ino_t>> IdentityOf(const std::string& name) {
  struct stat status {};
  if (name == "-" || stat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return std::pair(status.st_dev, status.st_ino);
}

std::string FileNameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// The extension without its dot; empty when there is none. A leading dot starts no extension.
std::string ExtensionOf(const std::string& path) {
  const std::string name = FileNameOf(path);
  const size_t dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

/// "dir/photo.raw" becomes "dir/photo-preview.png".
std::string Renamed(const std::string& input, const std::string& suffix,
                    const PictureFormat& format) {
  const std::string extension = ExtensionOf(input);
  const size_t cut = extension.empty() ? 0 : extension.size() + 1;
  return input.substr(0, input.size() - cut) + suffix + "." + format.extensions.front();
}

const PictureFormat& ChooseFormat(const OutputOptions& options, bool toDirectory) {
  if (options.format != nullptr) return *options.format;
  const bool named = !options.output.empty() && options.output != "-" && !toDirectory;
  const std::string extension = named ? ExtensionOf(options.output) : "";
  if (extension.empty()) return PictureFormats().front();
  if (const PictureFormat* const format = FindFormat(extension)) return *format;
  throw UsageError("'" + PrintableOutput(options.output) + "' ends in '." +
                   PrintableOutput(extension) +
                   "', which says no picture format; choose one with --format");
}

void RequireDepth(const PictureFormat& format, int depth) {
  if (format.depths.contains(depth)) return;
  std::vector<PictureFormat> others = PictureFormats();
  std::erase_if(others, [&](const PictureFormat& other) { return !other.depths.contains(depth); });
  throw UsageError(format.Title() + " has " + std::to_string(*format.depths.begin()) +
                   " bits per sample; " + std::to_string(depth) + " bits need --format " +
                   Choices(others, &PictureFormat::name));
}

void MakeDirectory(const std::string& name) {
  if (!IsDirectory(name) && mkdir(name.c_str(), 0777) != 0) {
    throw UsageError("cannot make the directory '" + PrintableOutput(name) +
                     "': " + std::generic_category().message(errno));
  }
}

/// Refuses plans in which one picture would replace another, or a raw file.
void CheckClashes(const std::vector<Job>& jobs) {
  std::set<std::pair<dev_t, ino_t>> inputs;
  for (const Job& job : jobs) {
    if (const auto identity = IdentityOf(job.input)) inputs.insert(*identity);
  }
  std::set<std::string> outputs;
  for (const Job& job : jobs) {
    const std::string name = PrintableOutput(job.output);
    if (!outputs.insert(job.output).second) {
      throw UsageError("more than one picture would be written to " + name);
    }
    const auto identity = IdentityOf(job.output);
    if (identity && inputs.count(*identity) > 0) {
      throw UsageError("a picture would replace the raw file " + name);
    }
  }
}

}  // namespace

void OutputOptions::AddTo(CLI::App& command, bool withDepth) {
  const std::vector<PictureFormat>& formats = PictureFormats();
  const std::string names = Choices(formats, &PictureFormat::name);
  std::vector<PictureFormat> lossy = formats;
  std::erase_if(lossy, [](auto& row) { return !row.traits.contains(FormatTrait::kQuality); });
  const std::string titles = Choices(lossy, &PictureFormat::Title);

  command.option_defaults()->group("Output");
  command
      .add_option("-o,--output", output,
                  "File or directory to write to; - is standard output. Default: beside each raw "
                  "file, with the format's extension. A name ending in / is a directory, made "
                  "when missing")
      ->type_name("NAME");
  command
      .add_option_function<std::string>(
          "--format",
          [this, names](const std::string& name) {
            format = FindFormat(name);
            if (format == nullptr) throw CLI::ValidationError("--format", "choose " + names);
          },
          "Picture format: " + names + ". Default: what the output's extension says, else " +
              formats.front().name)
      ->type_name("FORMAT");
  if (withDepth) {
    command.add_option("--depth", header.depth, "Bits per colour sample, 8 or 16. Default: 8")
        ->type_name("BITS")
        ->check(CLI::IsMember({8, 16}).description(""));
  }
  command.add_option("--quality", header.quality, titles + " quality, 1 to 100. Default: 92")
      ->type_name("N")
      ->check(CLI::Range(1, 100).description(""));
  command
      .add_option("--resolution", header.resolution,
                  "Pixels per inch to record for printing. Default: 300")
      ->type_name("N")
      ->check(CLI::Range(1U, kHighestResolution).description(""));
  auto* const overwrite = command.add_flag("--force", force, "Overwrite files that exist");
  command
      .add_flag("--skip-existing", skipExisting,
                "Leave files that exist alone and count them as done")
      ->excludes(overwrite);
}

OutputPlan PlanOutputs(const std::vector<std::string>& inputs, const OutputOptions& options,
                       const std::string& suffix) {
  const std::string& output = options.output;
  const bool toDirectory = !output.empty() && (output.back() == '/' || IsDirectory(output));
  if (inputs.size() > 1 && !output.empty() && !toDirectory) {
    throw UsageError("several files need a directory to go to: '" + PrintableOutput(output) +
                     "' is none (end it in / to have it made)");
  }
  OutputPlan plan;
  plan.format = &ChooseFormat(options, toDirectory);
  RequireDepth(*plan.format, options.header.depth);
  for (const std::string& input : inputs) {
    const std::string base = input == "-" ? "standard-input" : input;
    std::string name = output;
    if (toDirectory) {
      const std::string slash = output.back() == '/' ? "" : "/";
      name = output + slash + Renamed(FileNameOf(base), suffix, *plan.format);
    } else if (output.empty()) {
      name = input == "-" ? "-" : Renamed(base, suffix, *plan.format);
    }
    plan.jobs.push_back({input, name});
  }
  CheckClashes(plan.jobs);
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    throw UsageError("standard input can be given once only");
  }
  if (toDirectory) MakeDirectory(output);
  if (plan.jobs.front().output == "-") {
    if (isatty(STDOUT_FILENO) != 0) {
      throw UsageError("a picture cannot be shown on the terminal; give a file name with -o");
    }
    ReserveStandardOutput();
  }
  return plan;
}

}  // namespace deimg::cli

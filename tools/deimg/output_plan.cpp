#include "output_plan.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <utility>

#include "failure.hpp"
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
std::string Renamed(const std::string& input, const std::string& suffix, PictureFormat format) {
  const std::string extension = ExtensionOf(input);
  const size_t cut = extension.empty() ? 0 : extension.size() + 1;
  return input.substr(0, input.size() - cut) + suffix + "." + std::string(Extension(format));
}

PictureFormat ChooseFormat(const OutputOptions& options, bool toDirectory) {
  if (options.format) return *options.format;
  if (options.output.empty() || options.output == "-" || toDirectory) return PictureFormat::kPng;
  const std::string extension = ExtensionOf(options.output);
  if (const auto format = FormatOfExtension(extension)) return *format;
  if (extension.empty()) return PictureFormat::kPng;
  throw UsageError("'" + PrintableOutput(options.output) + "' ends in '." +
                   PrintableOutput(extension) +
                   "', which says no picture format; choose one with --format");
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
  const char* const group = "Output";
  command
      .add_option("-o,--output", output,
                  "File or directory to write to; - is standard output. Default: beside each raw "
                  "file, with the format's extension. A name ending in / is a directory, made "
                  "when missing")
      ->type_name("NAME")
      ->group(group);
  command
      .add_option_function<std::string>(
          "--format",
          [this](const std::string& name) {
            format = FormatOfExtension(name);
            if (!format) {
              throw CLI::ValidationError("--format", "choose png, tiff, jpeg or ppm");
            }
          },
          "Picture format: png, tiff, jpeg or ppm. Default: what the output's extension says, "
          "else png")
      ->type_name("FORMAT")
      ->group(group);
  if (withDepth) {
    command.add_option("--depth", depth, "Bits per colour sample, 8 or 16. Default: 8")
        ->type_name("BITS")
        ->check(CLI::IsMember({8, 16}).description(""))
        ->group(group);
  }
  command.add_option("--quality", quality, "JPEG quality, 1 to 100. Default: 92")
      ->type_name("N")
      ->check(CLI::Range(1, 100).description(""))
      ->group(group);
  command
      .add_option("--resolution", resolution,
                  "Pixels per inch to record for printing. Default: 300")
      ->type_name("N")
      ->check(CLI::Range(1U, kHighestResolution).description(""))
      ->group(group);
  auto* const overwrite =
      command.add_flag("--force", force, "Overwrite files that exist")->group(group);
  command
      .add_flag("--skip-existing", skipExisting,
                "Leave files that exist alone and count them as done")
      ->excludes(overwrite)
      ->group(group);
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
  plan.format = ChooseFormat(options, toDirectory);
  if (plan.format == PictureFormat::kJpeg && options.depth == 16) {
    throw UsageError("JPEG has 8 bits per sample; 16 bits need --format png, tiff or ppm");
  }
  for (const std::string& input : inputs) {
    const std::string base = input == "-" ? "standard-input" : input;
    std::string name = output;
    if (toDirectory) {
      const std::string slash = output.back() == '/' ? "" : "/";
      name = output + slash + Renamed(FileNameOf(base), suffix, plan.format);
    } else if (output.empty()) {
      name = input == "-" ? "-" : Renamed(base, suffix, plan.format);
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

void WritePicture(const Job& job, PictureFormat format, const OutputOptions& options,
                  PictureSize size, const LineSource& source) {
  OutputFile output(job.output, options.force, NeedsSeeking(format));
  PictureHeader header;
  header.width = size.width;
  header.height = size.height;
  header.depth = options.depth;
  header.quality = options.quality;
  header.resolution = options.resolution;
  const std::unique_ptr<PictureWriter> writer =
      MakePipelinedWriter(MakeWriter(format, output.file(), header));
  source([&](std::span<const std::byte> line) { writer->WriteLine(line); });
  writer->Finish();
  output.Commit();
}

}  // namespace deimg::cli

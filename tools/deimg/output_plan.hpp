/// Which file becomes which: output names and picture formats.
#ifndef DEIMG_TOOLS_DEIMG_OUTPUT_PLAN_HPP
#define DEIMG_TOOLS_DEIMG_OUTPUT_PLAN_HPP

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "picture_writer.hpp"
#include "progress_display.hpp"
#include "raw_info.hpp"

namespace deimg::cli {

/// The options that say where pictures go and how they are encoded.
struct OutputOptions {
  std::string output;  ///< -o; empty when not given
  std::optional<PictureFormat> format;
  int depth = 8;
  int quality = 92;
  unsigned resolution = 300;
  bool force = false;
  bool skipExisting = false;

  /// Adds the options to a command; the preview and the thumbnail have no depth to choose.
  void AddTo(CLI::App& command, bool withDepth);
};

/// What to do with every input: checked names, nothing written twice.
struct OutputPlan {
  std::vector<Job> jobs;
  PictureFormat format = PictureFormat::kPng;
};

/// Names an output for every input; `suffix` goes into names made from an input's name. Makes the
/// output directory when it ends in "/" and is missing. Throws UsageError.
OutputPlan PlanOutputs(const std::vector<std::string>& inputs, const OutputOptions& options,
                       const std::string& suffix);

/// Hands each finished line to the function it is given; throws when the job fails.
using LineSource = std::function<void(const host::LineCallback&)>;

/// Writes one picture of `size` to `job.output`, with lines from `source`.
void WritePicture(const Job& job, PictureFormat format, const OutputOptions& options,
                  PictureSize size, const LineSource& source);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_OUTPUT_PLAN_HPP

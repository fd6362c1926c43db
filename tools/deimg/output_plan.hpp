/// Which file becomes which: output names and picture formats.
#ifndef DEIMG_TOOLS_DEIMG_OUTPUT_PLAN_HPP
#define DEIMG_TOOLS_DEIMG_OUTPUT_PLAN_HPP

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "picture_formats.hpp"
#include "progress_display.hpp"

namespace deimg::cli {

/// The options that say where pictures go and how they are encoded.
struct OutputOptions {
  std::string output;                     ///< -o; empty when not given
  const PictureFormat* format = nullptr;  ///< --format; null when not given
  PictureHeader header;                   ///< all but the picture's size
  bool force = false;
  bool skipExisting = false;

  /// Adds the options to a command; the preview and the thumbnail have no depth to choose.
  void AddTo(CLI::App& command, bool withDepth);
};

/// What to do with every input: checked names, nothing written twice.
struct OutputPlan {
  std::vector<Job> jobs;
  const PictureFormat* format = nullptr;
};

/// Names an output for every input; `suffix` goes into names made from an input's name. Makes the
/// output directory when it ends in "/" and is missing. Throws UsageError.
OutputPlan PlanOutputs(const std::vector<std::string>& inputs, const OutputOptions& options,
                       const std::string& suffix);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_OUTPUT_PLAN_HPP

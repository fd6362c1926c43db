/// The job queue: one piece of work for each of many files, some at a time.
#ifndef DEIMG_TOOLS_DEIMG_BATCH_HPP
#define DEIMG_TOOLS_DEIMG_BATCH_HPP

#include <CLI/CLI.hpp>
#include <deimg/streams.hpp>
#include <functional>
#include <vector>

#include "progress_display.hpp"

namespace deimg::cli {

enum ExitStatus { kAllWell = 0, kUsage = 1, kSomeFailed = 2, kAllFailed = 3 };

/// How to go through the files: the options that every command with files to work on shares.
struct BatchOptions {
  unsigned jobs = 1;  ///< files at once
  int threads = 0;  ///< for each file; 0: as many as there are cores if it is a single one, else 1
  DisplayMaker* makeDisplay = MakeUsualDisplay;

  BatchOptions();  ///< as many files at once as there are cores
  void AddTo(CLI::App& command);

  /// What develops each of so many files.
  [[nodiscard]] host::DevelopFunction FunctionFor(size_t files) const;
};

/// Handles one file; throws Failure, or any exception, when it cannot. Called on several threads.
using Work = std::function<Outcome(const Job&, const host::ProgressCallback&)>;

/// Works through all jobs, whichever of them fail, until done or interrupted.
ExitStatus RunBatch(const std::vector<Job>& jobs, const BatchOptions& options,
                    const std::string& verb, const Work& work);

/// The exit status for `failed` of `total` files.
ExitStatus StatusOf(size_t failed, size_t total);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_BATCH_HPP

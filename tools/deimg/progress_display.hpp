/// What the user sees while files are being worked on. Everything goes to standard error.
#ifndef DEIMG_TOOLS_DEIMG_PROGRESS_DISPLAY_HPP
#define DEIMG_TOOLS_DEIMG_PROGRESS_DISPLAY_HPP

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "failure.hpp"

namespace deimg::cli {

/// One file to work on.
struct Job {
  std::string input;   ///< a name, or "-" for standard input
  std::string output;  ///< a name, "-" for standard output, or empty when nothing is written
};

enum class Outcome { kDone, kSkipped };

/// How a run over many files ended.
struct Summary {
  size_t total = 0;
  size_t done = 0;
  size_t skipped = 0;
  /// Failures in the order of the files.
  struct Failed {
    Job job;
    Failure failure;
  };
  std::vector<Failed> failed;
  std::chrono::duration<double> elapsed{};
  bool interrupted = false;
};

/// Called by one thread at a time.
class ProgressDisplay {
 public:
  virtual ~ProgressDisplay() = default;
  virtual void Start(size_t /*total*/) {}
  virtual void FileStarted(const Job& /*job*/) {}
  /// `percent` of this file is done; `whole` is the share of all files, 0 to 1.
  virtual void FileProgress(const Job& /*job*/, int /*percent*/, double /*whole*/) {}
  virtual void FileDone(const Job& /*job*/, Outcome /*outcome*/, double /*seconds*/) {}
  virtual void FileFailed(const Job& /*job*/, const Failure& /*failure*/) {}
  /// Reports the failures, unless that has been done.
  virtual void Finish(const Summary& summary);
};

/// Makes a display; `verb` says what happens to the files, for example "developed".
using DisplayMaker = std::unique_ptr<ProgressDisplay>(const std::string& verb);
DisplayMaker MakeBarDisplay, MakeJsonDisplay;
/// A bar on a terminal, one line a file otherwise.
DisplayMaker MakeUsualDisplay;

/// What --progress chooses from.
struct ProgressStyle {
  std::string name;
  DisplayMaker* make;
};
const std::vector<ProgressStyle>& ProgressStyles();

/// "a.raw -> a.png", or "a.raw: developed" when nothing is written.
std::string Describe(const Job& job, Outcome outcome, const std::string& verb);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_PROGRESS_DISPLAY_HPP

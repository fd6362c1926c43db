#include "progress_display.hpp"

#include <unistd.h>

#include <cstdio>

namespace deimg::cli {
namespace {

/// One line for every file that is done.
class LineDisplay final : public ProgressDisplay {
 public:
  explicit LineDisplay(std::string verb) : verb_(std::move(verb)) {}

  void FileDone(const Job& job, Outcome outcome, double /*seconds*/) override {
    std::fprintf(stderr, "%s\n", Describe(job, outcome, verb_).c_str());
  }
  void Finish(const Summary& summary) override {
    ProgressDisplay::Finish(summary);
    if (summary.total > 1 && !summary.failed.empty()) {
      std::fprintf(stderr, "deimg: %zu of %zu files failed\n", summary.failed.size(),
                   summary.total);
    }
  }

 private:
  std::string verb_;
};

std::unique_ptr<ProgressDisplay> MakeFailuresDisplay(const std::string& /*verb*/) {
  return std::make_unique<ProgressDisplay>();
}

}  // namespace

void ProgressDisplay::Finish(const Summary& summary) {
  for (const auto& [job, failure] : summary.failed) {
    std::fprintf(stderr, "deimg: %s: %s\n", PrintableInput(job.input).c_str(),
                 failure.Sentence().c_str());
  }
  if (summary.interrupted) std::fputs("deimg: interrupted\n", stderr);
}

std::unique_ptr<ProgressDisplay> MakeUsualDisplay(const std::string& verb) {
  if (isatty(STDERR_FILENO) != 0) return MakeBarDisplay(verb);
  return std::make_unique<LineDisplay>(verb);
}

const std::vector<ProgressStyle>& ProgressStyles() {
  static const std::vector<ProgressStyle> styles = {
      {"none", MakeFailuresDisplay}, {"bar", MakeBarDisplay}, {"json", MakeJsonDisplay}};
  return styles;
}

std::string Describe(const Job& job, Outcome outcome, const std::string& verb) {
  const std::string input = PrintableInput(job.input);
  if (outcome == Outcome::kSkipped) return PrintableOutput(job.output) + " exists, skipped";
  return job.output.empty() ? input + ": " + verb : input + " -> " + PrintableOutput(job.output);
}

}  // namespace deimg::cli

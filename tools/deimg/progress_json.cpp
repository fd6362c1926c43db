#include <cstdio>

#include "json_text.hpp"
#include "progress_display.hpp"

namespace deimg::cli {
namespace {

/// One object a line, for programs: every event has "event"; see the manual for the rest.
class JsonDisplay final : public ProgressDisplay {
 public:
  void Start(size_t total) override { Print({{"event", "start"}, {"files", total}}); }
  void FileStarted(const Job& job) override { Print(Event("file", job)); }
  void FileProgress(const Job& job, int percent, double whole) override {
    Json event = Event("progress", job);
    event["percent"] = percent;
    event["whole"] = whole;
    Print(event);
  }
  void FileDone(const Job& job, Outcome outcome, double seconds) override {
    Json event = Event(outcome == Outcome::kSkipped ? "skipped" : "done", job);
    if (!job.output.empty()) AddName(event, "output", job.output);
    event["seconds"] = seconds;
    Print(event);
  }
  void FileFailed(const Job& job, const Failure& failure) override {
    Json event = Event("failed", job);
    event["doing"] = failure.doing();
    event["message"] = failure.what();
    event["code"] = failure.code();
    Print(event);
  }
  void Finish(const Summary& summary) override {
    Print({{"event", "end"},
           {"files", summary.total},
           {"done", summary.done},
           {"skipped", summary.skipped},
           {"failed", summary.failed.size()},
           {"interrupted", summary.interrupted},
           {"seconds", summary.elapsed.count()}});
  }

 private:
  static Json Event(const char* name, const Job& job) {
    Json event = {{"event", name}};
    AddName(event, "file", job.input);
    return event;
  }
  static void Print(const Json& event) { std::fprintf(stderr, "%s\n", JsonText(event).c_str()); }
};

}  // namespace

std::unique_ptr<ProgressDisplay> MakeJsonDisplay(const std::string& /*verb*/) {
  return std::make_unique<JsonDisplay>();
}

}  // namespace deimg::cli

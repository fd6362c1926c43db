#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "progress_display.hpp"

namespace deimg::cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRedraw{80};
constexpr double kSecondsBeforeEstimate = 0.5;
constexpr double kShareBeforeEstimate = 0.05;  // earlier, nothing is known about the pace
constexpr size_t kLongestName = 30;
constexpr size_t kFewestCells = 5;
constexpr size_t kMostCells = 40;

size_t TerminalColumns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string Format(const char* format, double value) {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

/// "0:07", "12:40" or "3:05:00".
std::string Duration(double seconds) {
  const auto whole = static_cast<long>(std::ceil(seconds));
  char text[32];
  if (whole < 3600) {
    std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
  }
  return text;
}

/// One line that is drawn over and over: what, bar, share, rate and time left.
class BarDisplay final : public ProgressDisplay {
 public:
  explicit BarDisplay(std::string verb) : verb_(std::move(verb)) {}
  ~BarDisplay() override { Clear(); }

  void Start(size_t total) override {
    total_ = total;
    begin_ = Clock::now();
  }
  void FileStarted(const Job& job) override {
    name_ = PrintableInput(job.input);
    Draw();
  }
  void FileProgress(const Job& /*job*/, int /*percent*/, double whole) override {
    whole_ = whole;
    Draw();
  }
  void FileDone(const Job& job, Outcome outcome, double seconds) override {
    ++done_;
    if (total_ > 1) {
      Draw();
      return;
    }
    Clear();
    std::fprintf(stderr, "%s (%.1f s)\n", Describe(job, outcome, verb_).c_str(), seconds);
  }
  void FileFailed(const Job& /*job*/, const Failure& /*failure*/) override { ++done_; }
  void Finish(const Summary& summary) override {
    Clear();
    ProgressDisplay::Finish(summary);
    if (summary.total < 2) return;
    std::string text =
        std::to_string(summary.done) + " of " + std::to_string(summary.total) + " files " + verb_;
    if (summary.skipped > 0) text += ", " + std::to_string(summary.skipped) + " skipped";
    if (!summary.failed.empty()) text += ", " + std::to_string(summary.failed.size()) + " failed";
    std::fprintf(stderr, "%s in %s\n", text.c_str(), Duration(summary.elapsed.count()).c_str());
  }

 private:
  void Draw() {
    const Clock::time_point now = Clock::now();
    if (drawn_ && now - lastDrawn_ < kRedraw) return;
    lastDrawn_ = now;
    drawn_ = true;

    std::string left =
        total_ == 1 ? ShortName() : std::to_string(done_) + "/" + std::to_string(total_) + " files";
    std::string right = Format("%3.0f %%", std::floor(100 * whole_));
    const double elapsed = std::chrono::duration<double>(now - begin_).count();
    if (elapsed > kSecondsBeforeEstimate && whole_ > kShareBeforeEstimate) {
      if (total_ > 1) {
        right += Format("  %.1f files/s", static_cast<double>(total_) * whole_ / elapsed);
      }
      right += "  " + Duration(elapsed * (1 - whole_) / whole_) + " left";
    }
    const size_t taken = left.size() + right.size() + 6;
    const size_t columns = TerminalColumns();
    std::string line = left + "  " + right;
    if (columns >= taken + kFewestCells) {
      const size_t cells = std::min(columns - taken, kMostCells);
      const auto full = static_cast<size_t>(static_cast<double>(cells) * std::min(whole_, 1.0));
      line = left + " [" + std::string(full, '#') + std::string(cells - full, '.') + "] " + right;
    }
    std::fprintf(stderr, "\r%s\x1b[K", line.substr(0, columns - 1).c_str());
    std::fflush(stderr);
  }
  void Clear() {
    if (drawn_) std::fputs("\r\x1b[K", stderr);
    drawn_ = false;
  }
  std::string ShortName() const {
    std::string name = name_.substr(name_.rfind('/') + 1);
    if (name.size() <= kLongestName) return name;
    size_t cut = 0;
    while (cut + 3 < kLongestName) cut += Utf8CharacterBytes(std::string_view(name).substr(cut));
    return name.substr(0, cut) + "...";
  }

  std::string verb_;
  std::string name_;
  size_t total_ = 0;
  size_t done_ = 0;
  double whole_ = 0;
  bool drawn_ = false;
  Clock::time_point begin_;
  Clock::time_point lastDrawn_;
};

}  // namespace

std::unique_ptr<ProgressDisplay> MakeBarDisplay(const std::string& verb) {
  return std::make_unique<BarDisplay>(verb);
}

}  // namespace deimg::cli

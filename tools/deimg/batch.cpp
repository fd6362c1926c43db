#include "batch.hpp"

#include <algorithm>
#include <cerrno>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "api/develop.h"
#include "api/thread_count.h"
#include "help_formatter.hpp"
#include "interrupt.hpp"

namespace deimg::cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kMostJobs = 256;

/// What an exception says about a file.
Failure FailureOf(const std::exception_ptr& thrown) {
  try {
    std::rethrow_exception(thrown);
  } catch (const Failure& failure) {
    return failure;
  } catch (const host::Error& error) {
    return {"developing", error.what(), error.code()};
  } catch (const std::bad_alloc&) {
    return {"working on it", host::CodeText(DEIMG_OUT_OF_MEMORY), DEIMG_OUT_OF_MEMORY};
  } catch (const std::exception& other) {
    return {"working on it", other.what(), host::kCallbackFailed};
  }
}

/// Shared by the workers; every member function locks.
class Queue {
 public:
  Queue(const std::vector<Job>& jobs, const Work& work, ProgressDisplay& display)
      : jobs_(jobs), work_(work), display_(display), percents_(jobs.size(), 0) {}

  void Run() {
    while (const std::optional<size_t> index = Take()) {
      const Clock::time_point begin = Clock::now();
      try {
        const Outcome outcome =
            work_(jobs_[*index], [&](int percent) { Progress(*index, percent); });
        Done(*index, outcome, std::chrono::duration<double>(Clock::now() - begin).count());
      } catch (...) {
        Failed(*index, FailureOf(std::current_exception()));
      }
    }
  }

  Summary Result() {
    for (const auto& [index, failure] : failed_) summary_.failed.push_back({jobs_[index], failure});
    summary_.total = jobs_.size();
    summary_.interrupted = CancelFlag();
    return summary_;
  }

 private:
  std::optional<size_t> Take() {
    const std::lock_guard lock(mutex_);
    if (next_ == jobs_.size() || CancelFlag()) return std::nullopt;
    display_.FileStarted(jobs_[next_]);
    return next_++;
  }
  void Progress(size_t index, int percent) {
    const std::lock_guard lock(mutex_);
    SetPercent(index, percent);
    display_.FileProgress(jobs_[index], percent, Whole());
  }
  void Done(size_t index, Outcome outcome, double seconds) {
    const std::lock_guard lock(mutex_);
    SetPercent(index, 100);
    ++(outcome == Outcome::kDone ? summary_.done : summary_.skipped);
    display_.FileDone(jobs_[index], outcome, seconds);
  }
  void Failed(size_t index, const Failure& failure) {
    const std::lock_guard lock(mutex_);
    SetPercent(index, 100);
    const bool stopped = CancelFlag() && failure.code() == host::SystemErrorCode(EINTR);
    if (stopped || failure.code() == host::kCancelled) return;
    failed_.emplace(index, failure);
    display_.FileFailed(jobs_[index], failure);
  }
  void SetPercent(size_t index, int percent) {
    percentSum_ += percent - percents_[index];
    percents_[index] = percent;
  }
  double Whole() const {
    return static_cast<double>(percentSum_) / (100.0 * static_cast<double>(jobs_.size()));
  }

  const std::vector<Job>& jobs_;
  const cli::Work& work_;
  ProgressDisplay& display_;
  std::mutex mutex_;
  size_t next_ = 0;
  std::vector<int> percents_;
  long percentSum_ = 0;
  std::map<size_t, Failure> failed_;
  Summary summary_;
};

}  // namespace

BatchOptions::BatchOptions() : jobs(std::max(1U, std::thread::hardware_concurrency())) {}

void BatchOptions::AddTo(CLI::App& command) {
  command.option_defaults()->group("Options");
  command.add_option("-j,--jobs", jobs, "Files to work on at once (default: one per core)")
      ->type_name("N")
      ->check(CLI::Range(1U, kMostJobs).description(""));
  command
      .add_option_function<std::string>(
          "--threads",
          [this](const std::string& text) {
            threads = ThreadCountOf(text);
            if (threads == 0) throw CLI::ValidationError("--threads", "takes 1 to 64, or all");
          },
          "Threads to develop each file on; 'all' is one per core (default: all for a single file, "
          "1 when there are several)")
      ->type_name("N");
  command
      .add_option_function<std::string>(
          "--progress",
          [this](const std::string& name) {
            const auto& styles = ProgressStyles();
            const auto style = std::ranges::find(styles, name, &ProgressStyle::name);
            if (style == styles.end()) {
              throw CLI::ValidationError("--progress",
                                         "choose " + Choices(styles, &ProgressStyle::name));
            }
            makeDisplay = style->make;
          },
          "What to show on standard error: none, bar, or json (one object a line). Default: a bar "
          "on a terminal, one line a file otherwise")
      ->type_name("STYLE");
}

host::DevelopFunction BatchOptions::FunctionFor(size_t files) const {
  const int count = threads > 0 ? threads : files == 1 ? ThreadCountOf("all") : 1;
  return [plan = ThreadPlan{.threads = count}](auto... arguments) {
    return deimg::Develop(arguments..., plan);
  };
}

ExitStatus RunBatch(const std::vector<Job>& jobs, const BatchOptions& options,
                    const std::string& verb, const Work& work) {
  const std::unique_ptr<ProgressDisplay> display = options.makeDisplay(verb);
  Queue queue(jobs, work, *display);
  const Clock::time_point begin = Clock::now();
  display->Start(jobs.size());
  {
    std::vector<std::jthread> helpers;
    const size_t workers = std::min<size_t>(options.jobs, jobs.size());
    for (size_t i = 1; i < workers; ++i) helpers.emplace_back([&] { queue.Run(); });
    queue.Run();
  }
  Summary summary = queue.Result();
  summary.elapsed = Clock::now() - begin;
  display->Finish(summary);
  return StatusOf(summary.failed.size(), summary.total);
}

ExitStatus StatusOf(size_t failed, size_t total) {
  if (failed == 0) return kAllWell;
  return failed == total ? kAllFailed : kSomeFailed;
}

}  // namespace deimg::cli

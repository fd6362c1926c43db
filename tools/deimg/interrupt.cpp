#include "interrupt.hpp"

#include <csignal>

namespace deimg::cli {
namespace {

std::atomic<bool> cancelled{false};
std::atomic<int> caught{0};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void OnSignal(int signal) {
  caught = signal;
  cancelled = true;
}

}  // namespace

void CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = OnSignal;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    // A signal ignored by the caller (nohup, a background job) stays ignored.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
      sigaction(signal, &action, nullptr);
    }
  }
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

const std::atomic<bool>& CancelFlag() { return cancelled; }

void FinishInterrupt() {
  if (const int signal = caught) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
}

}  // namespace deimg::cli

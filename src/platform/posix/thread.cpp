#include "platform/thread.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <csignal>
#include <new>

namespace deimg::platform {
namespace {

struct Waiting {
  pthread_mutex_t mutex;
  pthread_cond_t changed;
};

Waiting& Of(unsigned char* storage) { return *std::launder(reinterpret_cast<Waiting*>(storage)); }

void* RunThread(void* thread) {
  static_cast<const Thread*>(thread)->Run();
  return nullptr;
}

}  // namespace

int ProcessorCount() noexcept {
#ifdef __linux__
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof(allowed), &allowed) == 0) return std::max(CPU_COUNT(&allowed), 1);
#endif
  return std::max(static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)), 1);
}

bool Thread::Start(Function function, void* argument) noexcept {
  function_ = function;
  argument_ = argument;
  pthread_t made{};
  // A thread inherits what its maker blocks.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  started_ = pthread_create(&made, nullptr, RunThread, this) == 0;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  handle_ = std::bit_cast<std::uintptr_t>(made);
  return started_;
}

void Thread::Join() noexcept {
  if (started_) pthread_join(std::bit_cast<pthread_t>(handle_), nullptr);
  started_ = false;
}

Monitor::Monitor() noexcept {
  static_assert(sizeof(Waiting) <= kSize && alignof(Waiting) <= 16);
  auto* const made = new (storage_) Waiting;
  pthread_mutex_init(&made->mutex, nullptr);
  pthread_cond_init(&made->changed, nullptr);
}
Monitor::~Monitor() {
  pthread_cond_destroy(&Of(storage_).changed);
  pthread_mutex_destroy(&Of(storage_).mutex);
}
void Monitor::Lock() noexcept { pthread_mutex_lock(&Of(storage_).mutex); }
void Monitor::Unlock() noexcept { pthread_mutex_unlock(&Of(storage_).mutex); }
void Monitor::Wait() noexcept { pthread_cond_wait(&Of(storage_).changed, &Of(storage_).mutex); }
void Monitor::WakeAll() noexcept { pthread_cond_broadcast(&Of(storage_).changed); }

}  // namespace deimg::platform

/// Threads and what they wait for, as the operating system has them: nothing here throws, and a
/// thread that cannot be had is an answer. One implementation per platform.
#ifndef DEIMG_PLATFORM_THREAD_H
#define DEIMG_PLATFORM_THREAD_H

#include <cstddef>
#include <cstdint>

namespace deimg::platform {

/// Cores that this process may run on, at least 1.
[[nodiscard]] int ProcessorCount() noexcept;

/// A thread that runs one function. It stays where it is while the thread runs, and waits for the
/// thread's end before it goes.
class Thread {
 public:
  using Function = void (*)(void* argument);

  Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  ~Thread() { Join(); }

  /// Starts the thread, once; no signal of the host is handled on it. False when the system has no
  /// more threads.
  [[nodiscard]] bool Start(Function function, void* argument) noexcept;

  /// Waits for the thread's end; returns at once when none was started.
  void Join() noexcept;

  /// Runs the function, on the new thread.
  void Run() const { function_(argument_); }

 private:
  Function function_ = nullptr;
  void* argument_ = nullptr;
  std::uintptr_t handle_ = 0;
  bool started_ = false;
};

/// A lock, and a way to wait until something that it guards has changed.
class Monitor {
 public:
  Monitor() noexcept;
  Monitor(const Monitor&) = delete;
  Monitor& operator=(const Monitor&) = delete;
  ~Monitor();

  void Lock() noexcept;
  void Unlock() noexcept;
  /// Gives the lock up until WakeAll() is called, or for no reason at all.
  void Wait() noexcept;
  void WakeAll() noexcept;

 private:
  // Room for the system's own structures; the implementations see that it suffices.
  static constexpr std::size_t kSize = 128;
  alignas(16) unsigned char storage_[kSize];
};

/// Holds a monitor's lock while it lives.
class MonitorLock {
 public:
  explicit MonitorLock(Monitor& monitor) noexcept : monitor_(monitor) { monitor_.Lock(); }
  MonitorLock(const MonitorLock&) = delete;
  MonitorLock& operator=(const MonitorLock&) = delete;
  ~MonitorLock() { monitor_.Unlock(); }

 private:
  Monitor& monitor_;
};

}  // namespace deimg::platform

#endif  // DEIMG_PLATFORM_THREAD_H

#include "platform/thread.h"

#include <algorithm>
#include <bit>
#include <new>

#include "platform/win32/windows_api.h"

namespace deimg::platform {
namespace {

struct Waiting {
  SRWLOCK mutex = SRWLOCK_INIT;
  CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
};

Waiting& Of(unsigned char* storage) { return *std::launder(reinterpret_cast<Waiting*>(storage)); }

// The system calls it with a stack aligned to 4 bytes on 32-bit machines. Something that has to be
// aligned makes the compiler align it, see CMakeLists.txt.
DWORD WINAPI RunThread(void* thread) {
  alignas(16) const volatile std::uintptr_t aligned = reinterpret_cast<std::uintptr_t>(thread);
  reinterpret_cast<const Thread*>(aligned)->Run();
  return 0;
}

}  // namespace

int ProcessorCount() noexcept {
  DWORD_PTR allowed = 0;
  DWORD_PTR all = 0;
  if (GetProcessAffinityMask(GetCurrentProcess(), &allowed, &all) == FALSE) return 1;
  return std::max(std::popcount(allowed), 1);
}

bool Thread::Start(Function function, void* argument) noexcept {
  function_ = function;
  argument_ = argument;
  const HANDLE made = CreateThread(nullptr, 0, RunThread, this, 0, nullptr);
  handle_ = std::bit_cast<std::uintptr_t>(made);
  started_ = made != nullptr;
  return started_;
}

void Thread::Join() noexcept {
  if (!started_) return;
  const auto thread = std::bit_cast<HANDLE>(handle_);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  started_ = false;
}

Monitor::Monitor() noexcept {
  static_assert(sizeof(Waiting) <= kSize && alignof(Waiting) <= 16);
  new (storage_) Waiting;
}
Monitor::~Monitor() = default;
void Monitor::Lock() noexcept { AcquireSRWLockExclusive(&Of(storage_).mutex); }
void Monitor::Unlock() noexcept { ReleaseSRWLockExclusive(&Of(storage_).mutex); }
void Monitor::Wait() noexcept {
  SleepConditionVariableSRW(&Of(storage_).changed, &Of(storage_).mutex, INFINITE, 0);
}
void Monitor::WakeAll() noexcept { WakeAllConditionVariable(&Of(storage_).changed); }

}  // namespace deimg::platform

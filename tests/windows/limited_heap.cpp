// The process heap of a machine that is short of memory: requests of 2 MiB and more fail.
#include "platform/platform.h"
#include "platform/win32/windows_api.h"

namespace deimg::platform {

void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept {
  constexpr std::size_t kLimit = std::size_t{2} << 20;
  if (bytes >= kLimit) return nullptr;
  return HeapAlloc(GetProcessHeap(), zeroed ? HEAP_ZERO_MEMORY : 0, bytes);
}

bool HeapRelease(void* allocation) noexcept {
  return HeapFree(GetProcessHeap(), 0, allocation) != FALSE;
}

}  // namespace deimg::platform

#include "platform/platform.h"
#include "platform/win32/windows_api.h"

namespace deimg::platform {

void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept {
  return HeapAlloc(GetProcessHeap(), zeroed ? HEAP_ZERO_MEMORY : 0, bytes);
}

bool HeapRelease(void* allocation) noexcept {
  return HeapFree(GetProcessHeap(), 0, allocation) != FALSE;
}

}  // namespace deimg::platform

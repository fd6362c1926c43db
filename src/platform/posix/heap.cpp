#include <cstdlib>

#include "platform/platform.h"

namespace deimg::platform {

void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept {
  return zeroed ? std::calloc(1, bytes) : std::malloc(bytes);
}

bool HeapRelease(void* allocation) noexcept {
  std::free(allocation);
  return true;
}

}  // namespace deimg::platform

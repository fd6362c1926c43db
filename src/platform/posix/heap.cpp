#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

#include "platform/platform.h"

namespace deimg::platform {
namespace {

#ifdef MADV_HUGEPAGE
constexpr std::size_t kLargeBlock = 2u << 20;
constexpr std::size_t kPage = 4096;

/// Asks for huge pages: the first touch of a sensor plane in small pages costs a tenth of a job.
void AdviseHugePages(void* allocation, std::size_t bytes) noexcept {
  const std::size_t before = (kPage - reinterpret_cast<std::uintptr_t>(allocation) % kPage) % kPage;
  const std::size_t pages = (bytes - before) / kPage;
  (void)madvise(static_cast<std::uint8_t*>(allocation) + before, pages * kPage, MADV_HUGEPAGE);
}
#endif

}  // namespace

void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept {
  void* const allocation = zeroed ? std::calloc(1, bytes) : std::malloc(bytes);
#ifdef MADV_HUGEPAGE
  if (allocation != nullptr && bytes >= kLargeBlock) AdviseHugePages(allocation, bytes);
#endif
  return allocation;
}

bool HeapRelease(void* allocation) noexcept {
  std::free(allocation);
  return true;
}

}  // namespace deimg::platform

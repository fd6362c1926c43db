#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "platform/platform.h"

namespace deimg::platform {
namespace {

/// Large blocks are mappings of their own: huge pages can be asked for them without changing
/// anything about the host's heap, and they are gone from the process when they are given back. The
/// first touch of a sensor plane in small pages costs a tenth of a job.
constexpr std::size_t kHugePage = 2u << 20;
constexpr std::size_t kLargeBlock = kHugePage;

/// In front of every allocation.
struct alignas(16) Header {
  std::size_t mappedBytes;  // 0: from the C library's heap
};

std::uint8_t* MapAnywhere(std::size_t bytes) noexcept {
  void* const made =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return made == MAP_FAILED ? nullptr : static_cast<std::uint8_t*>(made);
}

/// Starts where a huge page does: the small ones before it would cost a fortieth of a job.
void* Map(std::size_t bytes) noexcept {
  const auto page = static_cast<std::size_t>(getpagesize());
  const std::size_t whole = (bytes + page - 1) / page * page;
  std::uint8_t* mapping = MapAnywhere(whole + kHugePage);
  if (mapping == nullptr) return MapAnywhere(bytes);
  const std::size_t before = -reinterpret_cast<std::uintptr_t>(mapping) % kHugePage;
  if (before != 0) (void)munmap(mapping, before);
  mapping += before;
  (void)munmap(mapping + whole, kHugePage - before);
#ifdef MADV_HUGEPAGE
  (void)madvise(mapping, bytes, MADV_HUGEPAGE);
#endif
  return mapping;
}

}  // namespace

void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept {
  if (bytes > SIZE_MAX / 2) return nullptr;
  const std::size_t all = bytes + sizeof(Header);
  const bool large = bytes >= kLargeBlock;
  void* const made = large ? Map(all) : zeroed ? std::calloc(1, all) : std::malloc(all);
  if (made == nullptr) return nullptr;
  auto* const header = static_cast<Header*>(made);
  header->mappedBytes = large ? all : 0;
  return header + 1;
}

bool HeapRelease(void* allocation) noexcept {
  auto* const header = static_cast<Header*>(allocation) - 1;
  if (header->mappedBytes != 0) return munmap(header, header->mappedBytes) == 0;
  std::free(header);
  return true;
}

}  // namespace deimg::platform

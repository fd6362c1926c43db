#include "storage/mem_block.h"

#include <cstring>

#include "platform/platform.h"

namespace deimg {
namespace {

constexpr std::size_t kAlignment = 64;
constexpr std::uint16_t kOwnedByLibrary = 1;

#pragma pack(push, 1)
struct Header {
  void* allocation;  // what the heap returned; the rest of the gap in front is padding
  std::uint16_t ownerFlag;
  std::uint32_t blockSize;
  void* selfPointer;  // ends right before the user area
};
#pragma pack(pop)

constexpr std::size_t kOverhead = sizeof(Header) + kAlignment - 1;

void* Make(std::size_t bytes, bool zeroed) noexcept {
  if (bytes > SIZE_MAX - kOverhead) return nullptr;
  void* const allocation = platform::HeapAllocate(bytes + kOverhead, zeroed);
  if (allocation == nullptr) return nullptr;
  const auto start = reinterpret_cast<std::uintptr_t>(allocation) + sizeof(Header);
  const std::size_t padding = (kAlignment - start % kAlignment) % kAlignment;
  std::uint8_t* const user = static_cast<std::uint8_t*>(allocation) + sizeof(Header) + padding;
  const Header header{allocation, kOwnedByLibrary, static_cast<std::uint32_t>(bytes), user};
  std::memcpy(user - sizeof(Header), &header, sizeof(Header));
  return user;
}

}  // namespace

void* MemBlock::Allocate(std::size_t bytes) noexcept { return Make(bytes, false); }

void* MemBlock::AllocateZeroed(std::size_t bytes) noexcept { return Make(bytes, true); }

Result MemBlock::Check(const void* user) noexcept {
  if (user == nullptr) return DEIMG_NOT_A_BLOCK;
  const void* self = nullptr;
  std::memcpy(&self, static_cast<const std::uint8_t*>(user) - sizeof(self), sizeof(self));
  return self == user ? DEIMG_OK : DEIMG_NOT_A_BLOCK;
}

Result MemBlock::Release(void* user) noexcept {
  DEIMG_RETURN_IF_FAILED(Check(user));
  Header header;
  std::memcpy(&header, static_cast<std::uint8_t*>(user) - sizeof(Header), sizeof(Header));
  if (header.ownerFlag == kOwnedByLibrary) (void)platform::HeapRelease(header.allocation);
  return DEIMG_OK;
}

}  // namespace deimg

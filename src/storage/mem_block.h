/// The library's memory: every buffer is a heap block that can tell itself from a foreign pointer.
#ifndef DEIMG_STORAGE_MEM_BLOCK_H
#define DEIMG_STORAGE_MEM_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "base/result.h"

namespace deimg {

/// A heap block with a header right in front of the user area. The header's last field is the user
/// area's own address, by which Release() recognises its blocks. User areas are aligned to 64
/// bytes, so that lines of samples start on a cache line.
class MemBlock {
 public:
  /// `bytes` uninitialised bytes, or null when memory is short. A size of 0 gives a valid block.
  [[nodiscard]] static void* Allocate(std::size_t bytes) noexcept;

  /// As Allocate, zero-filled.
  [[nodiscard]] static void* AllocateZeroed(std::size_t bytes) noexcept;

  /// DEIMG_OK when `user` is a block of this allocator, DEIMG_NOT_A_BLOCK otherwise.
  [[nodiscard]] static Result Check(const void* user) noexcept;

  /// Gives the block back; DEIMG_NOT_A_BLOCK (and nothing freed) for any other pointer.
  static Result Release(void* user) noexcept;
};

/// Sole owner of `count` values of a trivial type in one MemBlock.
template <typename T>
class BlockOf {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  BlockOf() = default;
  BlockOf(BlockOf&& other) noexcept : data_(std::exchange(other.data_, nullptr)) {}
  BlockOf& operator=(BlockOf&& other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  BlockOf(const BlockOf&) = delete;
  BlockOf& operator=(const BlockOf&) = delete;
  ~BlockOf() { Reset(); }

  /// Both give an empty owner when memory is short or the size cannot be expressed.
  [[nodiscard]] static BlockOf Uninitialised(std::uint64_t count) noexcept {
    return BlockOf(Fits(count) ? MemBlock::Allocate(Bytes(count)) : nullptr);
  }
  [[nodiscard]] static BlockOf Zeroed(std::uint64_t count) noexcept {
    return BlockOf(Fits(count) ? MemBlock::AllocateZeroed(Bytes(count)) : nullptr);
  }

  void Reset() noexcept {
    if (data_ != nullptr) MemBlock::Release(std::exchange(data_, nullptr));
  }

  explicit operator bool() const { return data_ != nullptr; }
  T* get() const { return data_; }
  T& operator[](std::size_t i) const { return data_[i]; }
  T* operator->() const { return data_; }

 private:
  explicit BlockOf(void* data) : data_(static_cast<T*>(data)) {}
  static bool Fits(std::uint64_t count) { return count <= SIZE_MAX / sizeof(T); }
  static std::size_t Bytes(std::uint64_t count) {
    return static_cast<std::size_t>(count) * sizeof(T);
  }

  T* data_ = nullptr;
};

}  // namespace deimg

#endif  // DEIMG_STORAGE_MEM_BLOCK_H

/// A work stream over one fixed-size memory block.
#ifndef DEIMG_STORAGE_MEMORY_STREAM_H
#define DEIMG_STORAGE_MEMORY_STREAM_H

#include <cstdint>

#include "api/result.h"
#include "storage/mem_block.h"

namespace deimg {

/// Owner of a memory-backed stream. Its operations never fail; reads and writes past the end are
/// cut short and seeks are clamped to the block.
class MemoryStream {
 public:
  MemoryStream() = default;

  /// A stream over `bytes` zero bytes at position 0; empty when memory is short.
  [[nodiscard]] static MemoryStream Make(std::uint64_t bytes);
  /// The same over bytes that are to be written before anything reads them. Clearing recycled
  /// memory for a plane would take a fortieth of a job.
  [[nodiscard]] static MemoryStream MakeUninitialised(std::uint64_t bytes);

  explicit operator bool() const { return static_cast<bool>(stream_); }
  CallerStream* get() const { return stream_.get(); }

  /// The stream's memory.
  std::uint8_t* memory() const { return data_.get(); }

 private:
  struct State {
    std::uint8_t* data;
    std::uint32_t size;
    std::uint32_t position;
  };
  struct Operations;
  static MemoryStream Over(BlockOf<std::uint8_t> data, std::uint64_t bytes);

  BlockOf<std::uint8_t> data_;
  BlockOf<State> state_;
  BlockOf<CallerStream> stream_;
};

}  // namespace deimg

#endif  // DEIMG_STORAGE_MEMORY_STREAM_H

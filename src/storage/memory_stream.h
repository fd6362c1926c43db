/// A work stream over one fixed-size memory block.
#ifndef DEIMG_STORAGE_MEMORY_STREAM_H
#define DEIMG_STORAGE_MEMORY_STREAM_H

#include <cstdint>

#include "storage/work_stream.h"

namespace deimg {

struct MemoryStreamState {
  std::uint8_t* data;
  std::uint32_t size;
  std::uint32_t position;

  Result Open(std::uint16_t mode);
  Result Close();
  Result Read(void* buffer, std::uint32_t& count);
  Result Write(const void* buffer, std::uint32_t& count);
  Result Seek(std::uint16_t origin, std::int32_t offset);
  Result Tell(std::uint32_t& at) const;
};

/// Owner of a memory-backed stream. Its operations never fail; reads and writes past the end are
/// cut short and seeks are clamped to the block.
class MemoryStream : public WorkStream<MemoryStreamState> {
 public:
  /// A stream over `bytes` zero bytes at position 0; empty when memory is short.
  [[nodiscard]] static MemoryStream Make(std::uint64_t bytes);
  /// The same over bytes that are to be written before anything reads them. Clearing recycled
  /// memory for a plane would take a fortieth of a job.
  [[nodiscard]] static MemoryStream MakeUninitialised(std::uint64_t bytes);

  /// A stream on another one's memory, which has to outlive it, with a position of its own: on
  /// another thread, say. It is for reading what nobody writes any more; empty when memory is
  /// short.
  [[nodiscard]] static MemoryStream Beside(const MemoryStream& other);

  /// The stream's memory, if it is its own.
  std::uint8_t* memory() const { return data_.get(); }
  /// The same as 16-bit samples.
  std::uint16_t* samples() const { return reinterpret_cast<std::uint16_t*>(memory()); }

 private:
  static MemoryStream Over(BlockOf<std::uint8_t> data, std::uint64_t bytes);

  BlockOf<std::uint8_t> data_;
};

}  // namespace deimg

#endif  // DEIMG_STORAGE_MEMORY_STREAM_H

#include "storage/memory_stream.h"

#include <algorithm>
#include <cstring>

namespace deimg {

Result MemoryStreamState::Open(std::uint16_t /*mode*/) {
  position = 0;
  return DEIMG_OK;
}

Result MemoryStreamState::Close() {
  position = 0;
  return DEIMG_OK;
}

Result MemoryStreamState::Read(void* buffer, std::uint32_t& count) {
  count = std::min(count, size - position);
  std::memcpy(buffer, data + position, count);
  position += count;
  return DEIMG_OK;
}

Result MemoryStreamState::Write(const void* buffer, std::uint32_t& count) {
  count = std::min(count, size - position);
  std::memcpy(data + position, buffer, count);
  position += count;
  return DEIMG_OK;
}

Result MemoryStreamState::Seek(std::uint16_t origin, std::int32_t offset) {
  std::int64_t target = offset;
  if (origin == DEIMG_SEEK_CURRENT) target += position;
  if (origin == DEIMG_SEEK_END) target = size;
  position = static_cast<std::uint32_t>(std::clamp<std::int64_t>(target, 0, size));
  return DEIMG_OK;
}

Result MemoryStreamState::Tell(std::uint32_t& at) const {
  at = position;
  return DEIMG_OK;
}

MemoryStream MemoryStream::Make(std::uint64_t bytes) {
  if (bytes > INT32_MAX) return {};
  return Over(BlockOf<std::uint8_t>::Zeroed(bytes), bytes);
}

MemoryStream MemoryStream::MakeUninitialised(std::uint64_t bytes) {
  if (bytes > INT32_MAX) return {};
  return Over(BlockOf<std::uint8_t>::Uninitialised(bytes), bytes);
}

MemoryStream MemoryStream::Beside(const MemoryStream& other) {
  MemoryStream made;
  (void)made.WorkStream::Make({other.state_->data, other.state_->size, 0});
  return made;
}

MemoryStream MemoryStream::Over(BlockOf<std::uint8_t> data, std::uint64_t bytes) {
  MemoryStream made;
  if (!data) return made;
  const MemoryStreamState state = {data.get(), static_cast<std::uint32_t>(bytes), 0};
  if (made.WorkStream::Make(state)) made.data_ = std::move(data);
  return made;
}

}  // namespace deimg

#include "storage/memory_stream.h"

#include <algorithm>
#include <cstring>

#include "storage/work_stream.h"

namespace deimg {

struct MemoryStream::Operations {
  static State& Of(void* cookie) { return *static_cast<State*>(cookie); }

  static void Open(void* cookie, std::uint16_t /*mode*/, std::uint32_t* error) {
    Of(cookie).position = 0;
    *error = DEIMG_OK;
  }

  static void Close(void* cookie, std::uint32_t* error) {
    Of(cookie).position = 0;
    *error = DEIMG_OK;
  }

  static void Read(void* cookie, void* buffer, std::uint32_t* count, std::uint32_t* error) {
    State& s = Of(cookie);
    *count = std::min(*count, s.size - s.position);
    std::memcpy(buffer, s.data + s.position, *count);
    s.position += *count;
    *error = DEIMG_OK;
  }

  static void Write(void* cookie, const void* buffer, std::uint32_t* count, std::uint32_t* error) {
    State& s = Of(cookie);
    *count = std::min(*count, s.size - s.position);
    std::memcpy(s.data + s.position, buffer, *count);
    s.position += *count;
    *error = DEIMG_OK;
  }

  static void Seek(void* cookie, std::uint16_t origin, std::int32_t offset, std::uint32_t* error) {
    State& s = Of(cookie);
    std::int64_t position = offset;
    if (origin == DEIMG_SEEK_CURRENT) position += s.position;
    if (origin == DEIMG_SEEK_END) position = s.size;
    s.position = static_cast<std::uint32_t>(std::clamp<std::int64_t>(position, 0, s.size));
    *error = DEIMG_OK;
  }

  static std::uint32_t Tell(void* cookie, std::uint32_t* error) {
    *error = DEIMG_OK;
    return Of(cookie).position;
  }
};

MemoryStream MemoryStream::Make(std::uint64_t bytes) {
  if (bytes > INT32_MAX) return {};
  return Over(BlockOf<std::uint8_t>::Zeroed(bytes), bytes);
}

MemoryStream MemoryStream::MakeUninitialised(std::uint64_t bytes) {
  if (bytes > INT32_MAX) return {};
  return Over(BlockOf<std::uint8_t>::Uninitialised(bytes), bytes);
}

MemoryStream MemoryStream::Over(BlockOf<std::uint8_t> data, std::uint64_t bytes) {
  MemoryStream made;
  auto state = BlockOf<State>::Zeroed(1);
  auto stream = BlockOf<CallerStream>::Zeroed(1);
  if (!data || !state || !stream) return made;
  *state.get() = {data.get(), static_cast<std::uint32_t>(bytes), 0};
  CallerStream& s = *stream.get();
  s = WorkStream(state.get());
  s.Open = Operations::Open;
  s.Close = Operations::Close;
  s.Read = Operations::Read;
  s.Write = Operations::Write;
  s.Seek = Operations::Seek;
  s.Tell = Operations::Tell;
  made.data_ = std::move(data);
  made.state_ = std::move(state);
  made.stream_ = std::move(stream);
  return made;
}

}  // namespace deimg

/// One call of a stream operation each; the value returned is the operation's error word.
#ifndef DEIMG_STORAGE_STREAM_CALLS_H
#define DEIMG_STORAGE_STREAM_CALLS_H

#include <algorithm>
#include <cstdint>

#include "base/result.h"

namespace deimg {

[[nodiscard]] inline Result Open(CallerStream& stream, DEImgOpenMode mode) {
  std::uint32_t error = 0;
  stream.Open(stream.cookie, static_cast<std::uint16_t>(mode), &error);
  return error;
}

[[nodiscard]] inline Result Close(CallerStream& stream) {
  std::uint32_t error = 0;
  stream.Close(stream.cookie, &error);
  return error;
}

[[nodiscard]] inline Result Seek(CallerStream& stream, DEImgSeekOrigin origin,
                                 std::int32_t offset) {
  std::uint32_t error = 0;
  stream.Seek(stream.cookie, static_cast<std::uint16_t>(origin), offset, &error);
  return error;
}

/// Seeks from the beginning. A position beyond what the operation can express wraps, as the
/// 32-bit interface does.
[[nodiscard]] inline Result SeekTo(CallerStream& stream, std::uint32_t position) {
  return Seek(stream, DEIMG_SEEK_BEGINNING, static_cast<std::int32_t>(position));
}

[[nodiscard]] inline Result Tell(CallerStream& stream, std::uint32_t& position) {
  std::uint32_t error = 0;
  position = stream.Tell(stream.cookie, &error);
  return error;
}

/// `delivered` is what the stream says it read, never more than `bytes`.
[[nodiscard]] inline Result Read(CallerStream& stream, void* buffer, std::uint32_t bytes,
                                 std::uint32_t& delivered) {
  std::uint32_t error = 0;
  std::uint32_t count = bytes;
  stream.Read(stream.cookie, buffer, &count, &error);
  delivered = std::min(count, bytes);
  return error;
}

[[nodiscard]] inline Result Write(CallerStream& stream, const void* buffer, std::uint32_t bytes) {
  std::uint32_t error = 0;
  std::uint32_t count = bytes;
  stream.Write(stream.cookie, buffer, &count, &error);
  return error;
}

/// Reports progress to a stream that has the operation.
[[nodiscard]] inline Result Progress(CallerStream& stream, int percent) {
  std::uint32_t error = 0;
  if (stream.Progress != nullptr) {
    stream.Progress(stream.cookie, static_cast<std::uint16_t>(percent), &error);
  }
  return error;
}

/// Closes a stream at the end of the scope; what the close reports is of no interest here.
class ClosedOnExit {
 public:
  explicit ClosedOnExit(CallerStream& stream) : stream_(stream) {}
  ClosedOnExit(const ClosedOnExit&) = delete;
  ClosedOnExit& operator=(const ClosedOnExit&) = delete;
  ~ClosedOnExit() { (void)Close(stream_); }

 private:
  CallerStream& stream_;
};

}  // namespace deimg

#endif  // DEIMG_STORAGE_STREAM_CALLS_H

/// What every stream of the library's own has in common.
#ifndef DEIMG_STORAGE_WORK_STREAM_H
#define DEIMG_STORAGE_WORK_STREAM_H

#include <cstdint>

#include "base/result.h"
#include "storage/mem_block.h"

namespace deimg {

/// Owner of a CallerStream whose operations are those of a State, which return their error words:
/// Open(mode), Close(), Read(buffer, count), Write(buffer, count), Seek(origin, offset) and
/// Tell(position). No progress reports; marked as the library's own.
template <typename State>
class WorkStream {
 public:
  explicit operator bool() const { return static_cast<bool>(stream_); }
  CallerStream* get() const { return stream_.get(); }

 protected:
  /// False, and nothing is kept, when memory is short.
  [[nodiscard]] bool Make(const State& initial) {
    auto state = BlockOf<State>::Zeroed(1);
    auto stream = BlockOf<CallerStream>::Zeroed(1);
    if (!state || !stream) return false;
    *state.get() = initial;
    *stream.get() = {state.get(), 0,    2,      DEIMG_PROGRESS_NEVER, Open, Close, Read, Write,
                     Seek,        Tell, nullptr};
    state_ = std::move(state);
    stream_ = std::move(stream);
    return true;
  }

  BlockOf<State> state_;
  BlockOf<CallerStream> stream_;

 private:
  static State& Of(void* cookie) { return *static_cast<State*>(cookie); }
  static void Open(void* cookie, std::uint16_t mode, std::uint32_t* error) {
    *error = Of(cookie).Open(mode);
  }
  static void Close(void* cookie, std::uint32_t* error) { *error = Of(cookie).Close(); }
  static void Read(void* cookie, void* buffer, std::uint32_t* count, std::uint32_t* error) {
    *error = Of(cookie).Read(buffer, *count);
  }
  static void Write(void* cookie, const void* buffer, std::uint32_t* count, std::uint32_t* error) {
    *error = Of(cookie).Write(buffer, *count);
  }
  static void Seek(void* cookie, std::uint16_t origin, std::int32_t offset, std::uint32_t* error) {
    *error = Of(cookie).Seek(origin, offset);
  }
  static std::uint32_t Tell(void* cookie, std::uint32_t* error) {
    std::uint32_t position = 0;
    *error = Of(cookie).Tell(position);
    return position;
  }
};

}  // namespace deimg

#endif  // DEIMG_STORAGE_WORK_STREAM_H

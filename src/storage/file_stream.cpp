#include "storage/file_stream.h"

#include <atomic>
#include <cstdint>
#include <cstring>

#include "storage/work_stream.h"

namespace deimg {
namespace {

constexpr char kTemporaryPrefix[] = "_dv";
constexpr int kNamesTried = 65536;  // every number a name can carry

// The only state of the process: names of two jobs must differ.
std::atomic<std::uint32_t> temporaryNameCounter{0};

}  // namespace

struct FileStream::Operations {
  static State& Of(void* cookie) { return *static_cast<State*>(cookie); }

  static bool IsOpen(const State& s) { return s.handle != platform::kInvalidFile; }

  static void CloseFile(State& s) {
    if (IsOpen(s)) platform::CloseFile(s.handle);
    s.handle = platform::kInvalidFile;
  }

  static platform::FileMode ModeOf(const State& s, std::uint16_t mode) {
    using platform::FileMode;
    switch (mode) {
      case DEIMG_OPEN_UPDATE:
        return s.mustExist ? FileMode::kUpdateExisting : FileMode::kUpdate;
      case DEIMG_OPEN_TRUNCATE:
        return s.mustExist ? FileMode::kTruncateExisting : FileMode::kTruncate;
      default:
        return FileMode::kRead;
    }
  }

  /// The seek to the beginning decides the error word: it opens the existing file by itself when
  /// the open proper failed.
  static void Open(void* cookie, std::uint16_t mode, std::uint32_t* error) {
    State& s = Of(cookie);
    CloseFile(s);
    s.handle = platform::OpenFile(s.path, ModeOf(s, mode), platform::AccessHint::kRandom);
    Seek(cookie, DEIMG_SEEK_BEGINNING, 0, error);
  }

  static void Close(void* cookie, std::uint32_t* error) {
    CloseFile(Of(cookie));
    *error = DEIMG_OK;
  }

  static void Read(void* cookie, void* buffer, std::uint32_t* count, std::uint32_t* error) {
    State& s = Of(cookie);
    *error = DEIMG_OK;
    if (!IsOpen(s)) Open(cookie, DEIMG_OPEN_READ, error);
    const std::uint32_t wanted = *count;
    *count = 0;
    if (!IsOpen(s)) {
      *error = DEIMG_FILE_NOT_OPEN;
    } else if (!platform::ReadFile(s.handle, buffer, wanted, *count)) {
      *error = DEIMG_FILE_READ;
    }
  }

  static void Write(void* cookie, const void* buffer, std::uint32_t* count, std::uint32_t* error) {
    State& s = Of(cookie);
    *error = DEIMG_OK;
    if (!IsOpen(s)) Open(cookie, DEIMG_OPEN_TRUNCATE, error);
    const std::uint32_t wanted = *count;
    *count = 0;
    if (!IsOpen(s)) {
      *error = DEIMG_FILE_NOT_OPEN;
    } else if (!platform::WriteFile(s.handle, buffer, wanted, *count)) {
      *error = DEIMG_FILE_WRITE;
    }
  }

  static void Seek(void* cookie, std::uint16_t origin, std::int32_t offset, std::uint32_t* error) {
    State& s = Of(cookie);
    *error = DEIMG_OK;
    if (!IsOpen(s)) {
      s.handle = platform::OpenFile(s.path, platform::FileMode::kUpdateExisting,
                                    platform::AccessHint::kSequential);
    }
    const auto from = origin == DEIMG_SEEK_CURRENT ? platform::SeekFrom::kCurrent
                      : origin == DEIMG_SEEK_END   ? platform::SeekFrom::kEnd
                                                   : platform::SeekFrom::kBeginning;
    if (!IsOpen(s)) {
      *error = DEIMG_FILE_NOT_OPEN;
    } else if (!platform::SeekFile(s.handle, from, offset)) {
      *error = DEIMG_FILE_SEEK;
    }
  }

  static std::uint32_t Tell(void* cookie, std::uint32_t* error) {
    const State& s = Of(cookie);
    std::uint32_t position = 0;
    *error = DEIMG_OK;
    if (!IsOpen(s)) {
      *error = DEIMG_FILE_NOT_OPEN;
    } else if (!platform::TellFile(s.handle, position)) {
      *error = DEIMG_FILE_TELL;
    }
    return position;
  }
};

FileStream FileStream::Make(const char* path) {
  FileStream made;
  const std::size_t length = std::strlen(path);
  if (length >= kPathSize) return made;
  auto stream = BlockOf<CallerStream>::Zeroed(1);
  if (!stream) return made;
  auto state = BlockOf<State>::Zeroed(1);
  if (!state) return made;
  std::memcpy(state->path, path, length + 1);
  state->handle = platform::kInvalidFile;
  CallerStream& s = *stream.get();
  s = WorkStream(state.get());
  s.Open = Operations::Open;
  s.Close = Operations::Close;
  s.Read = Operations::Read;
  s.Write = Operations::Write;
  s.Seek = Operations::Seek;
  s.Tell = Operations::Tell;
  made.state_ = std::move(state);
  made.stream_ = std::move(stream);
  return made;
}

Result FileStream::MakeTemporary(FileStream& made) {
  for (int tried = 0; tried < kNamesTried; ++tried) {
    char path[kPathSize];
    if (!MakeTemporaryName(path, sizeof(path))) break;
    FileStream stream = Make(path);
    if (!stream) break;
    const platform::CreateOutcome outcome = platform::CreateNewFile(path);
    if (outcome == platform::CreateOutcome::kCreated) {
      stream.state_->mustExist = true;
      made = std::move(stream);
      return DEIMG_OK;
    }
    // Not ours: releasing the stream must not delete it.
    stream.stream_.Reset();
    if (outcome == platform::CreateOutcome::kFailed) return DEIMG_FILE_NOT_OPEN;
  }
  return DEIMG_NO_TEMPORARY_STREAM;
}

void FileStream::Release() {
  if (stream_) {
    Operations::CloseFile(*state_.get());
    platform::DeleteFile(state_->path);
  }
  state_.Reset();
  stream_.Reset();
}

bool MakeTemporaryName(char* buffer, std::size_t size) {
  char directory[FileStream::kPathSize];
  if (!platform::TemporaryDirectory(directory, sizeof(directory))) return false;
  for (int tried = 0; tried < kNamesTried; ++tried) {
    const std::uint32_t unique = ++temporaryNameCounter;
    if (!platform::TemporaryFileName(directory, kTemporaryPrefix, unique, buffer, size)) {
      return false;
    }
    if (!platform::FileExists(buffer)) return true;
  }
  return false;
}

}  // namespace deimg

#include "storage/file_stream.h"

#include <atomic>
#include <cstdint>
#include <cstring>

namespace deimg {
namespace {

constexpr char kTemporaryPrefix[] = "_dv";
constexpr int kNamesTried = 65536;  // every number a name can carry

// The only state of the process: names of two jobs must differ.
std::atomic<std::uint32_t> temporaryNameCounter{0};

}  // namespace

Result FileStreamState::Open(std::uint16_t mode) {
  (void)Close();
  handle = platform::OpenFile(path, ModeOf(mode), platform::AccessHint::kRandom);
  return Seek(DEIMG_SEEK_BEGINNING, 0);
}

Result FileStreamState::Close() {
  if (isOpen()) platform::CloseFile(handle);
  handle = platform::kInvalidFile;
  return DEIMG_OK;
}

Result FileStreamState::Read(void* buffer, std::uint32_t& count) {
  const std::uint32_t wanted = count;
  count = 0;
  if (!isOpen()) (void)Open(DEIMG_OPEN_READ);
  if (!isOpen()) return DEIMG_FILE_NOT_OPEN;
  return platform::ReadFile(handle, buffer, wanted, count) ? DEIMG_OK : DEIMG_FILE_READ;
}

Result FileStreamState::Write(const void* buffer, std::uint32_t& count) {
  const std::uint32_t wanted = count;
  count = 0;
  if (!isOpen()) (void)Open(DEIMG_OPEN_TRUNCATE);
  if (!isOpen()) return DEIMG_FILE_NOT_OPEN;
  return platform::WriteFile(handle, buffer, wanted, count) ? DEIMG_OK : DEIMG_FILE_WRITE;
}

Result FileStreamState::Seek(std::uint16_t origin, std::int32_t offset) {
  if (!isOpen()) {
    handle = platform::OpenFile(path, platform::FileMode::kUpdateExisting,
                                platform::AccessHint::kSequential);
  }
  if (!isOpen()) return DEIMG_FILE_NOT_OPEN;
  const auto from = origin == DEIMG_SEEK_CURRENT ? platform::SeekFrom::kCurrent
                    : origin == DEIMG_SEEK_END   ? platform::SeekFrom::kEnd
                                                 : platform::SeekFrom::kBeginning;
  return platform::SeekFile(handle, from, offset) ? DEIMG_OK : DEIMG_FILE_SEEK;
}

Result FileStreamState::Tell(std::uint32_t& position) const {
  if (!isOpen()) return DEIMG_FILE_NOT_OPEN;
  return platform::TellFile(handle, position) ? DEIMG_OK : DEIMG_FILE_TELL;
}

platform::FileMode FileStreamState::ModeOf(std::uint16_t mode) const {
  using platform::FileMode;
  switch (mode) {
    case DEIMG_OPEN_UPDATE:
      return mustExist ? FileMode::kUpdateExisting : FileMode::kUpdate;
    case DEIMG_OPEN_TRUNCATE:
      return mustExist ? FileMode::kTruncateExisting : FileMode::kTruncate;
    default:
      return FileMode::kRead;
  }
}

FileStream FileStream::Make(const char* path) {
  FileStream made;
  const std::size_t length = std::strlen(path);
  if (length >= FileStreamState::kPathSize) return made;
  FileStreamState state{};
  std::memcpy(state.path, path, length + 1);
  state.handle = platform::kInvalidFile;
  (void)made.WorkStream::Make(state);
  return made;
}

Result FileStream::MakeTemporary(FileStream& made) {
  for (int tried = 0; tried < kNamesTried; ++tried) {
    char path[FileStreamState::kPathSize];
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
    (void)state_->Close();
    platform::DeleteFile(state_->path);
  }
  state_.Reset();
  stream_.Reset();
}

bool MakeTemporaryName(char* buffer, std::size_t size) {
  char directory[FileStreamState::kPathSize];
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

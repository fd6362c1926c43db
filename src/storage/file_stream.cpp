#include "storage/file_stream.h"

#include <atomic>
#include <cstdint>

namespace deimg {
namespace {

constexpr char kTemporaryPrefix[] = "_dv";
constexpr int kNamesTried = 65536;      // every number a name can carry
constexpr std::size_t kPathSize = 256;  // with the terminating NUL

// The only state of the process: names of two jobs must differ.
std::atomic<std::uint32_t> temporaryNameCounter{0};

}  // namespace

Result FileStreamState::Open(std::uint16_t mode) {
  isOpen = mode != DEIMG_OPEN_TRUNCATE || platform::EmptyFile(handle);
  return Seek(DEIMG_SEEK_BEGINNING, 0);
}

Result FileStreamState::Close() {
  isOpen = false;
  return DEIMG_OK;
}

Result FileStreamState::Read(void* buffer, std::uint32_t& count) {
  const std::uint32_t wanted = count;
  count = 0;
  if (!isOpen) DEIMG_RETURN_IF_FAILED(Open(DEIMG_OPEN_READ));
  return platform::ReadFile(handle, buffer, wanted, count) ? DEIMG_OK : DEIMG_FILE_READ;
}

Result FileStreamState::Write(const void* buffer, std::uint32_t& count) {
  const std::uint32_t wanted = count;
  count = 0;
  if (!isOpen) DEIMG_RETURN_IF_FAILED(Open(DEIMG_OPEN_TRUNCATE));
  return platform::WriteFile(handle, buffer, wanted, count) ? DEIMG_OK : DEIMG_FILE_WRITE;
}

Result FileStreamState::Seek(std::uint16_t origin, std::int32_t offset) {
  isOpen = true;  // a seek opens the stream too, and keeps what the file holds
  const auto from = origin == DEIMG_SEEK_CURRENT ? platform::SeekFrom::kCurrent
                    : origin == DEIMG_SEEK_END   ? platform::SeekFrom::kEnd
                                                 : platform::SeekFrom::kBeginning;
  return platform::SeekFile(handle, from, offset) ? DEIMG_OK : DEIMG_FILE_SEEK;
}

Result FileStreamState::Tell(std::uint32_t& position) const {
  if (!isOpen) return DEIMG_FILE_NOT_OPEN;
  return platform::TellFile(handle, position) ? DEIMG_OK : DEIMG_FILE_TELL;
}

Result FileStream::MakeTemporary(FileStream& made) {
  FileStream stream;
  if (!stream.Make({platform::kInvalidFile, false})) return DEIMG_NO_TEMPORARY_STREAM;
  for (int tried = 0; tried < kNamesTried; ++tried) {
    char path[kPathSize];
    if (!MakeTemporaryName(path, sizeof(path))) break;
    switch (platform::CreateWorkFile(path, stream.state_->handle)) {
      case platform::CreateOutcome::kCreated:
        made = std::move(stream);
        return DEIMG_OK;
      case platform::CreateOutcome::kFailed:
        return DEIMG_FILE_NOT_OPEN;
      case platform::CreateOutcome::kNameTaken:
        break;
    }
  }
  return DEIMG_NO_TEMPORARY_STREAM;
}

void FileStream::Release() {
  if (state_ && state_->handle != platform::kInvalidFile) platform::CloseFile(state_->handle);
  state_.Reset();
  stream_.Reset();
}

bool MakeTemporaryName(char* buffer, std::size_t size) {
  char directory[kPathSize];
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

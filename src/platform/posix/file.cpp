#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"

namespace deimg::platform {
namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
constexpr int kAlways = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

int Flags(FileMode mode) {
  switch (mode) {
    case FileMode::kRead:
      return O_RDONLY;
    case FileMode::kUpdate:
      return O_RDWR | O_CREAT;
    case FileMode::kUpdateExisting:
      return O_RDWR;
    case FileMode::kTruncate:
      return O_RDWR | O_CREAT;
    case FileMode::kTruncateExisting:
      return O_RDWR;
  }
  return O_RDONLY;
}

bool Empties(FileMode mode) {
  return mode == FileMode::kTruncate || mode == FileMode::kTruncateExisting;
}

template <typename Call>
auto Retried(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

int Descriptor(FileHandle file) { return static_cast<int>(file); }

}  // namespace

FileHandle OpenFile(const char* path, FileMode mode, AccessHint hint) noexcept {
  const int fd = Retried([&] { return open(path, Flags(mode) | kAlways, kOwnerOnly); });
  if (fd < 0) return kInvalidFile;
  // Emptied only once it is known to be a plain file of this user.
  struct stat status {};
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid() ||
      (Empties(mode) && ftruncate(fd, 0) != 0)) {
    close(fd);
    return kInvalidFile;
  }
  (void)posix_fadvise(fd, 0, 0,
                      hint == AccessHint::kRandom ? POSIX_FADV_RANDOM : POSIX_FADV_SEQUENTIAL);
  return fd;
}

CreateOutcome CreateNewFile(const char* path) noexcept {
  const int fd =
      Retried([&] { return open(path, O_RDWR | O_CREAT | O_EXCL | kAlways, kOwnerOnly); });
  if (fd < 0) return errno == EEXIST ? CreateOutcome::kNameTaken : CreateOutcome::kFailed;
  close(fd);
  return CreateOutcome::kCreated;
}

bool ReadFile(FileHandle file, void* buffer, std::uint32_t bytes,
              std::uint32_t& transferred) noexcept {
  transferred = 0;
  while (transferred < bytes) {
    const ssize_t n = Retried([&] {
      return read(Descriptor(file), static_cast<char*>(buffer) + transferred, bytes - transferred);
    });
    if (n < 0) return false;
    if (n == 0) break;
    transferred += static_cast<std::uint32_t>(n);
  }
  return true;
}

bool WriteFile(FileHandle file, const void* buffer, std::uint32_t bytes,
               std::uint32_t& transferred) noexcept {
  transferred = 0;
  while (transferred < bytes) {
    const ssize_t n = Retried([&] {
      return write(Descriptor(file), static_cast<const char*>(buffer) + transferred,
                   bytes - transferred);
    });
    if (n <= 0) return false;
    transferred += static_cast<std::uint32_t>(n);
  }
  return true;
}

bool SeekFile(FileHandle file, SeekFrom from, std::int32_t offset) noexcept {
  const int whence = from == SeekFrom::kBeginning ? SEEK_SET
                     : from == SeekFrom::kCurrent ? SEEK_CUR
                                                  : SEEK_END;
  return lseek(Descriptor(file), offset, whence) >= 0;
}

bool TellFile(FileHandle file, std::uint32_t& position) noexcept {
  const off_t at = lseek(Descriptor(file), 0, SEEK_CUR);
  if (at < 0) return false;
  position = static_cast<std::uint32_t>(at);
  return true;
}

void CloseFile(FileHandle file) noexcept { close(Descriptor(file)); }

void DeleteFile(const char* path) noexcept { unlink(path); }

bool TemporaryDirectory(char* buffer, std::size_t size) noexcept {
  const char* directory = std::getenv("TMPDIR");
  if (directory == nullptr || directory[0] != '/') directory = P_tmpdir;
  const int n = std::snprintf(buffer, size, "%s", directory);
  return n > 0 && static_cast<std::size_t>(n) < size;
}

bool TemporaryFileName(const char* directory, const char* prefix, std::uint32_t unique,
                       char* buffer, std::size_t size) noexcept {
  const int n = std::snprintf(buffer, size, "%s/%s%X.tmp", directory, prefix, unique & 0xFFFFu);
  return n > 0 && static_cast<std::size_t>(n) < size;
}

bool FileExists(const char* path) noexcept {
  struct stat status {};
  return lstat(path, &status) == 0;
}

}  // namespace deimg::platform

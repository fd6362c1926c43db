#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "platform/platform.h"

namespace deimg::platform {
namespace {

template <typename Call>
auto Retried(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

int Descriptor(FileHandle file) { return static_cast<int>(file); }

/// Keeps the signal of the file size limit from the process while it lives: it is blocked on this
/// thread, and taken away when a write brought it about.
class FileSizeSignal {
 public:
  FileSizeSignal() {
    sigemptyset(&set_);
    sigaddset(&set_, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &set_, &before_);
    wasPending_ = IsPending();
  }
  FileSizeSignal(const FileSizeSignal&) = delete;
  FileSizeSignal& operator=(const FileSizeSignal&) = delete;
  ~FileSizeSignal() {
    int taken = 0;
    if (!wasPending_ && IsPending()) sigwait(&set_, &taken);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

 private:
  static bool IsPending() {
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, SIGXFSZ) == 1;
  }

  sigset_t set_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

}  // namespace

CreateOutcome CreateWorkFile(const char* path, FileHandle& file) noexcept {
  constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
  const int fd = Retried(
      [&] { return open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly); });
  if (fd < 0) return errno == EEXIST ? CreateOutcome::kNameTaken : CreateOutcome::kFailed;
  unlink(path);
  (void)posix_fadvise(fd, 0, 0, POSIX_FADV_RANDOM);
  file = fd;
  return CreateOutcome::kCreated;
}

bool EmptyFile(FileHandle file) noexcept {
  return Retried([&] { return ftruncate(Descriptor(file), 0); }) == 0;
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
  const FileSizeSignal withheld;
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

bool EnvironmentValue(const char* name, char* buffer, std::size_t size) noexcept {
  const char* const value = std::getenv(name);
  if (value == nullptr) return false;
  const int n = std::snprintf(buffer, size, "%s", value);
  return n >= 0 && static_cast<std::size_t>(n) < size;
}

bool FileExists(const char* path) noexcept {
  struct stat status {};
  return lstat(path, &status) == 0;
}

}  // namespace deimg::platform

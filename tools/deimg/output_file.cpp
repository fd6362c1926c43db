#include "output_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <deimg/streams.hpp>
#include <vector>

#include "failure.hpp"

namespace deimg::cli {
namespace {

constexpr mode_t kNewFile = 0666;  // less the umask
constexpr int kAttempts = 1000;
constexpr size_t kCopyChunk = size_t{1} << 18;

int standardOutput = STDOUT_FILENO;

/// A name beside `name` that no other job uses, whatever the length of `name`.
std::string TemporaryName(const std::string& name, int attempt) {
  static std::atomic<unsigned> counter{0};
  const size_t slash = name.rfind('/');
  const std::string directory = slash == std::string::npos ? "" : name.substr(0, slash + 1);
  return directory + ".deimg-" + std::to_string(getpid()) + "-" + std::to_string(counter++) + "-" +
         std::to_string(attempt) + ".part";
}

/// The file that a symbolic link leads to, so that the link survives being written through.
std::string Resolve(const std::string& name) {
  struct stat status {};
  if (lstat(name.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return name;
  char* const resolved = realpath(name.c_str(), nullptr);
  if (resolved == nullptr) return name;
  std::string result = resolved;
  std::free(resolved);
  return result;
}

}  // namespace

OutputFile::OutputFile(std::string name, bool overwrite, bool seekable)
    : name_(std::move(name)), overwrite_(overwrite) {
  if (name_ == "-") {
    OpenDirectly(fcntl(standardOutput, F_DUPFD_CLOEXEC, 0), seekable);
    return;
  }
  struct stat status {};
  const bool exists = stat(name_.c_str(), &status) == 0;
  if (exists && S_ISDIR(status.st_mode)) Fail(EISDIR);
  if (exists && !S_ISREG(status.st_mode)) {
    OpenDirectly(open(name_.c_str(), O_WRONLY | O_CLOEXEC), seekable);
    return;
  }
  if (exists && !overwrite_) Fail(EEXIST);
  name_ = Resolve(name_);
  OpenTemporary();
}

OutputFile::~OutputFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::OpenTemporary() {
  int descriptor = -1;
  for (int attempt = 0; descriptor < 0 && attempt < kAttempts; ++attempt) {
    temporary_ = TemporaryName(name_, attempt);
    descriptor = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
    if (descriptor < 0 && errno != EEXIST) break;
  }
  if (descriptor < 0) {
    temporary_.clear();
    Fail(errno);
  }
  file_.reset(fdopen(descriptor, "w+b"));
}

void OutputFile::OpenDirectly(int descriptor, bool seekable) {
  if (descriptor < 0) Fail(errno);
  File direct(fdopen(descriptor, "wb"));
  struct stat status {};
  if (!seekable || (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                    lseek(descriptor, 0, SEEK_CUR) == 0)) {
    file_ = std::move(direct);
    return;
  }
  target_ = std::move(direct);
  file_.reset(std::tmpfile());
  if (!file_) Fail(errno);
}

void OutputFile::CopyToTarget() {
  std::vector<char> chunk(kCopyChunk);
  if (std::fseek(file_.get(), 0, SEEK_SET) != 0) Fail(errno);
  while (const size_t count = std::fread(chunk.data(), 1, chunk.size(), file_.get())) {
    if (std::fwrite(chunk.data(), 1, count, target_.get()) != count) Fail(errno);
  }
  if (std::ferror(file_.get()) != 0) Fail(errno);
  file_ = std::move(target_);
}

void OutputFile::Commit() {
  if (std::fflush(file_.get()) != 0) Fail(errno);
  if (target_) CopyToTarget();
  // Data first, then the name: after a power cut the name stands for a whole picture or for none.
  if (!temporary_.empty() && fsync(fileno(file_.get())) != 0) Fail(errno);
  if (std::fclose(file_.release()) != 0) Fail(errno);
  if (!temporary_.empty()) GiveName();
}

void OutputFile::GiveName() {
  const char* const from = temporary_.c_str();
  const char* const to = name_.c_str();
  if (!overwrite_) {
    // Unlike a rename, a link never replaces what another program put there meanwhile.
    if (link(from, to) == 0) {
      unlink(from);
      temporary_.clear();
      return;
    }
    if (errno == EEXIST || Exists(name_)) Fail(EEXIST);
    // This file system has no hard links.
  }
  if (rename(from, to) != 0) Fail(errno);
  temporary_.clear();
}

void OutputFile::Fail(int error) const {
  const std::string doing = "writing " + PrintableOutput(name_);
  if (error == EEXIST) {
    throw Failure(doing, "it exists already; --force overwrites it", host::SystemErrorCode(error));
  }
  throw Failure::System(doing, error);
}

bool Exists(const std::string& name) {
  struct stat status {};
  return lstat(name.c_str(), &status) == 0;
}

void ReserveStandardOutput() {
  const int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (kept < 0) return;
  standardOutput = kept;
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

}  // namespace deimg::cli

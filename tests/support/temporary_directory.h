/// A temporary directory of a test's own.
#ifndef DEIMG_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H
#define DEIMG_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H

#include <cstdlib>
#include <filesystem>
#include <string>

namespace deimg::testing {

/// Where the library puts its temporary files while an object of this class lives.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    // In memory where that exists: tests make tens of thousands of small files.
    const std::filesystem::path shared = "/dev/shm";
    const bool inMemory = std::filesystem::is_directory(shared);
    path_ = (inMemory ? shared : std::filesystem::temp_directory_path()) / "deimg-test-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) std::abort();
    if (const char* const before = std::getenv("TMPDIR")) before_ = before;
    Use(path_);
  }
  ~TemporaryDirectory() {
    before_.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", before_.c_str(), 1);
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }
  bool IsEmpty() const { return std::filesystem::is_empty(path_); }

  /// Names another directory to the library.
  static void Use(const std::string& path) { setenv("TMPDIR", path.c_str(), 1); }

 private:
  std::string path_;
  std::string before_;
};

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H

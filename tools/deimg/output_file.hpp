/// Where a picture goes: a file that appears under its name only when complete, or standard output.
#ifndef DEIMG_TOOLS_DEIMG_OUTPUT_FILE_HPP
#define DEIMG_TOOLS_DEIMG_OUTPUT_FILE_HPP

#include <cstdio>
#include <memory>
#include <string>

namespace deimg::cli {

class OutputFile {
 public:
  /// Prepares to write `name`, or standard output when it is "-". A regular file is written under a
  /// temporary name beside it. With `seekable`, file() can be positioned even when the target
  /// cannot. Throws Failure; an existing file without `overwrite` is one.
  OutputFile(std::string name, bool overwrite, bool seekable);
  /// Without Commit, removes what was written.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  std::FILE* file() const noexcept { return file_.get(); }
  /// Makes sure everything is on disk and gives the file its name. Throws Failure.
  void Commit();

 private:
  struct Closer {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
  };
  using File = std::unique_ptr<std::FILE, Closer>;

  void OpenTemporary();
  void OpenDirectly(int descriptor, bool seekable);
  void CopyToTarget();
  void GiveName();
  [[noreturn]] void Fail(int error) const;

  std::string name_;
  std::string temporary_;  ///< empty when there is none to remove
  bool overwrite_;
  File file_;
  File target_;  ///< where file() is copied on Commit, when the target cannot be positioned
};

/// Whether something exists under this name.
bool Exists(const std::string& name);

/// Keeps standard output for the picture: from now on everything else that prints there reaches
/// standard error. Call once, before any picture is written to "-".
void ReserveStandardOutput();

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_OUTPUT_FILE_HPP

/// A work stream over a named file, and the temporary files made with it.
#ifndef DEIMG_STORAGE_FILE_STREAM_H
#define DEIMG_STORAGE_FILE_STREAM_H

#include <cstddef>

#include "platform/platform.h"
#include "storage/work_stream.h"

namespace deimg {

/// Error words of the operations: 35 no file open, 37 seek, 38 tell, 39 read, 40 write.
struct FileStreamState {
  static constexpr std::size_t kPathSize = 256;  // with the terminating NUL

  char path[kPathSize];
  platform::FileHandle handle;
  bool mustExist;  // a temporary file is created once, exclusively, and never again

  /// The seek to the beginning decides the result: it opens the existing file by itself when the
  /// open proper failed.
  Result Open(std::uint16_t mode);
  Result Close();
  /// Both open a file that is not open: an existing one to read, an emptied one to write.
  Result Read(void* buffer, std::uint32_t& count);
  Result Write(const void* buffer, std::uint32_t& count);
  Result Seek(std::uint16_t origin, std::int32_t offset);
  Result Tell(std::uint32_t& position) const;

 private:
  bool isOpen() const { return handle != platform::kInvalidFile; }
  platform::FileMode ModeOf(std::uint16_t mode) const;
};

/// Owner of a file-backed stream. Releasing it closes the file and deletes it.
class FileStream : public WorkStream<FileStreamState> {
 public:
  FileStream() = default;
  FileStream(FileStream&&) = default;
  FileStream& operator=(FileStream&&) = default;
  ~FileStream() { Release(); }

  /// A stream on `path` with no file open yet; empty when memory is short or the path too long.
  [[nodiscard]] static FileStream Make(const char* path);

  /// Makes a stream on a new, empty temporary file that nobody else can share, read or redirect.
  ///
  /// The name is taken exclusively; one that is taken meanwhile means the next name.
  /// @return DEIMG_NO_TEMPORARY_STREAM when no free name is found or no stream can be made,
  ///         DEIMG_FILE_NOT_OPEN when the file cannot be created.
  [[nodiscard]] static Result MakeTemporary(FileStream& made);

  const char* path() const { return state_->path; }

  /// Closes and deletes the file and gives everything back. Nothing happens on an empty stream.
  void Release();
};

/// Fills `buffer` with the path of a file in the temporary directory that does not exist yet, named
/// "_dv" and a number counted per process. False after 65,536 names that exist.
[[nodiscard]] bool MakeTemporaryName(char* buffer, std::size_t size);

}  // namespace deimg

#endif  // DEIMG_STORAGE_FILE_STREAM_H

/// A work stream over a temporary file.
#ifndef DEIMG_STORAGE_FILE_STREAM_H
#define DEIMG_STORAGE_FILE_STREAM_H

#include <cstddef>

#include "platform/platform.h"
#include "storage/work_stream.h"

namespace deimg {

/// Error words of the operations: 35 no file open, 37 seek, 38 tell, 39 read, 40 write. The file is
/// opened once, when it is made; Open() and Close() only say whether the stream is in use.
struct FileStreamState {
  platform::FileHandle handle;
  bool isOpen;

  /// Rewinds; mode 3 empties the file.
  Result Open(std::uint16_t mode);
  Result Close();
  /// Both open a stream that is not open: to read as it is, to write emptied.
  Result Read(void* buffer, std::uint32_t& count);
  Result Write(const void* buffer, std::uint32_t& count);
  Result Seek(std::uint16_t origin, std::int32_t offset);
  Result Tell(std::uint32_t& position) const;
};

/// Owner of a file-backed stream. Releasing it closes the file, which is gone then.
class FileStream : public WorkStream<FileStreamState> {
 public:
  FileStream() = default;
  FileStream(FileStream&&) = default;
  FileStream& operator=(FileStream&&) = default;
  ~FileStream() { Release(); }

  /// Makes a stream on a new, empty temporary file that nobody else can share, read or redirect.
  ///
  /// The name is taken exclusively; one that is taken meanwhile means the next name.
  /// @return DEIMG_NO_TEMPORARY_STREAM when no free name is found or no stream can be made,
  ///         DEIMG_FILE_NOT_OPEN when the file cannot be created.
  [[nodiscard]] static Result MakeTemporary(FileStream& made);

  /// Closes the file and gives everything back. Nothing happens on an empty stream.
  void Release();
};

/// Fills `buffer` with the path of a file in the temporary directory that does not exist yet, named
/// "_dv" and a number counted per process; a path has at most 255 characters. False after 65,536
/// names that exist.
[[nodiscard]] bool MakeTemporaryName(char* buffer, std::size_t size);

}  // namespace deimg

#endif  // DEIMG_STORAGE_FILE_STREAM_H

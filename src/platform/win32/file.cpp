#include <bit>
#include <cstdio>

#include "platform/platform.h"
#include "platform/win32/windows_api.h"

namespace deimg::platform {
namespace {

HANDLE Handle(FileHandle file) { return std::bit_cast<HANDLE>(file); }

struct FileAccess {
  DWORD rights;
  DWORD sharing;
  DWORD disposition;
  bool empties;
};

FileAccess AccessFor(FileMode mode) {
  constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
  switch (mode) {
    case FileMode::kRead:
      return {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, false};
    case FileMode::kUpdate:
      return {kBoth, FILE_SHARE_WRITE, OPEN_ALWAYS, false};
    case FileMode::kUpdateExisting:
      return {kBoth, FILE_SHARE_WRITE, OPEN_EXISTING, false};
    case FileMode::kTruncate:
      return {kBoth, FILE_SHARE_WRITE, OPEN_ALWAYS, true};
    case FileMode::kTruncateExisting:
      return {kBoth, FILE_SHARE_WRITE, OPEN_EXISTING, true};
  }
  return {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, false};
}

bool IsPlainFile(HANDLE file) {
  constexpr DWORD kNotPlain = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  BY_HANDLE_FILE_INFORMATION information;
  return GetFileType(file) == FILE_TYPE_DISK &&
         GetFileInformationByHandle(file, &information) != FALSE &&
         (information.dwFileAttributes & kNotPlain) == 0;
}

}  // namespace

// Whose file it is, the directory says: temporary directories belong to one user, and files inherit
// their access list.
FileHandle OpenFile(const char* path, FileMode mode, AccessHint hint) noexcept {
  const FileAccess access = AccessFor(mode);
  const bool sequential = hint == AccessHint::kSequential;
  const HANDLE file = CreateFileA(
      path, access.rights, sequential ? FILE_SHARE_READ | FILE_SHARE_WRITE : access.sharing,
      nullptr, access.disposition,
      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_OPEN_REPARSE_POINT |
          (sequential ? FILE_FLAG_SEQUENTIAL_SCAN : FILE_FLAG_RANDOM_ACCESS),
      nullptr);
  if (file == INVALID_HANDLE_VALUE) return kInvalidFile;
  // Emptied only once it is known to be a plain file.
  if (!IsPlainFile(file) || (access.empties && SetEndOfFile(file) == FALSE)) {
    CloseHandle(file);
    return kInvalidFile;
  }
  return std::bit_cast<FileHandle>(file);
}

CreateOutcome CreateNewFile(const char* path) noexcept {
  const HANDLE file = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_TEMPORARY, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return GetLastError() == ERROR_FILE_EXISTS ? CreateOutcome::kNameTaken : CreateOutcome::kFailed;
  }
  CloseHandle(file);
  return CreateOutcome::kCreated;
}

bool ReadFile(FileHandle file, void* buffer, std::uint32_t bytes,
              std::uint32_t& transferred) noexcept {
  DWORD done = 0;
  const bool read = ::ReadFile(Handle(file), buffer, bytes, &done, nullptr) != FALSE;
  transferred = done;
  return read;
}

bool WriteFile(FileHandle file, const void* buffer, std::uint32_t bytes,
               std::uint32_t& transferred) noexcept {
  DWORD done = 0;
  const bool written = ::WriteFile(Handle(file), buffer, bytes, &done, nullptr) != FALSE;
  transferred = done;
  return written && done == bytes;
}

bool SeekFile(FileHandle file, SeekFrom from, std::int32_t offset) noexcept {
  const DWORD origin = from == SeekFrom::kBeginning ? FILE_BEGIN
                       : from == SeekFrom::kCurrent ? FILE_CURRENT
                                                    : FILE_END;
  return SetFilePointer(Handle(file), offset, nullptr, origin) != INVALID_SET_FILE_POINTER;
}

bool TellFile(FileHandle file, std::uint32_t& position) noexcept {
  const DWORD at = SetFilePointer(Handle(file), 0, nullptr, FILE_CURRENT);
  if (at == INVALID_SET_FILE_POINTER) return false;
  position = at;
  return true;
}

void CloseFile(FileHandle file) noexcept { CloseHandle(Handle(file)); }

void DeleteFile(const char* path) noexcept { DeleteFileA(path); }

bool TemporaryDirectory(char* buffer, std::size_t size) noexcept {
  const DWORD length = GetTempPathA(static_cast<DWORD>(size), buffer);
  return length > 0 && length < size;
}

bool TemporaryFileName(const char* directory, const char* prefix, std::uint32_t unique,
                       char* buffer, std::size_t size) noexcept {
  // The number 0 would ask the system to create a file of its own choice: another one stands in.
  const UINT number = unique & 0xFFFFu;
  char path[MAX_PATH];
  if (GetTempFileNameA(directory, prefix, number != 0 ? number : 0xFFFFu, path) == 0) return false;
  const int length = std::snprintf(buffer, size, "%s", path);
  return length > 0 && static_cast<std::size_t>(length) < size;
}

bool FileExists(const char* path) noexcept {
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA(path, &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return true;
}

}  // namespace deimg::platform

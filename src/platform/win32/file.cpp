#include <bit>
#include <cstdio>
#include <cstring>

#include "platform/platform.h"
#include "platform/win32/windows_api.h"

namespace deimg::platform {
namespace {

HANDLE Handle(FileHandle file) { return std::bit_cast<HANDLE>(file); }

}  // namespace

// Whose file it is, the directory says: temporary directories belong to one user, and files inherit
// their access list. Shared with nobody, the file keeps its name to itself.
CreateOutcome CreateWorkFile(const char* path, FileHandle& file) noexcept {
  const HANDLE created = CreateFileA(
      path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_RANDOM_ACCESS, nullptr);
  if (created == INVALID_HANDLE_VALUE) {
    return GetLastError() == ERROR_FILE_EXISTS ? CreateOutcome::kNameTaken : CreateOutcome::kFailed;
  }
  file = std::bit_cast<FileHandle>(created);
  return CreateOutcome::kCreated;
}

bool EmptyFile(FileHandle file) noexcept {
  return SeekFile(file, SeekFrom::kBeginning, 0) && SetEndOfFile(Handle(file)) != FALSE;
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

bool TemporaryDirectory(char* buffer, std::size_t size) noexcept {
  const DWORD length = GetTempPathA(static_cast<DWORD>(size), buffer);
  return length > 0 && length < size;
}

bool TemporaryFileName(const char* directory, const char* prefix, std::uint32_t unique,
                       char* buffer, std::size_t size) noexcept {
  const UINT number = unique & 0xFFFFu;
  char path[MAX_PATH];
  if (GetTempFileNameA(directory, prefix, number != 0 ? number : 1, path) == 0) return false;
  const int length = std::snprintf(buffer, size, "%s", path);
  if (number == 0) {
    // The service would take the number 0 for the wish to have a file made under another one: its
    // name for 1 has that digit before the extension.
    char* const digit = std::strrchr(buffer, '.');
    if (digit == nullptr || digit == buffer) return false;
    digit[-1] = '0';
  }
  return length > 0 && static_cast<std::size_t>(length) < size;
}

bool EnvironmentValue(const char* name, char* buffer, std::size_t size) noexcept {
  const DWORD length = GetEnvironmentVariableA(name, buffer, static_cast<DWORD>(size));
  return length > 0 && length < size;
}

bool FileExists(const char* path) noexcept {
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA(path, &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return true;
}

}  // namespace deimg::platform

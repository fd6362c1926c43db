/// Everything the library asks of the operating system. One implementation per platform.
#ifndef DEIMG_PLATFORM_PLATFORM_H
#define DEIMG_PLATFORM_PLATFORM_H

#include <cstddef>
#include <cstdint>

namespace deimg::platform {

// --- Process heap ---------------------------------------------------------------------------

/// Allocates `bytes` bytes, zero-filled on request; null when memory is short. Zeroed memory of a
/// large request costs nothing until it is touched.
[[nodiscard]] void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept;

/// Gives an allocation back; false when the heap refuses it.
[[nodiscard]] bool HeapRelease(void* allocation) noexcept;

// --- Files ----------------------------------------------------------------------------------

using FileHandle = std::intptr_t;
inline constexpr FileHandle kInvalidFile = -1;

enum class CreateOutcome { kCreated, kNameTaken, kFailed };

/// Creates an empty work file under a name that nothing has yet, and opens it for reading and
/// writing by this process alone. It is never opened again, and nobody else can find, replace or
/// empty it: the name is removed at once, or locked while the file is open. It is gone when it is
/// closed, and when the process ends.
[[nodiscard]] CreateOutcome CreateWorkFile(const char* path, FileHandle& file) noexcept;

/// Empties the file; false on failure.
[[nodiscard]] bool EmptyFile(FileHandle file) noexcept;

/// Reads or writes up to `bytes` bytes at the file position. False on failure; `transferred` then
/// holds what was moved before it. A write moves everything or fails, also where a file size limit
/// would end the process with a signal.
[[nodiscard]] bool ReadFile(FileHandle file, void* buffer, std::uint32_t bytes,
                            std::uint32_t& transferred) noexcept;
[[nodiscard]] bool WriteFile(FileHandle file, const void* buffer, std::uint32_t bytes,
                             std::uint32_t& transferred) noexcept;

enum class SeekFrom { kBeginning, kCurrent, kEnd };
[[nodiscard]] bool SeekFile(FileHandle file, SeekFrom from, std::int32_t offset) noexcept;
[[nodiscard]] bool TellFile(FileHandle file, std::uint32_t& position) noexcept;
void CloseFile(FileHandle file) noexcept;

// --- Temporary names ------------------------------------------------------------------------

/// The system's temporary directory; false when it does not fit the buffer.
[[nodiscard]] bool TemporaryDirectory(char* buffer, std::size_t size) noexcept;

/// Forms the path of a temporary file from directory, prefix and the low 16 bits of `unique` in
/// hexadecimal, without creating it; false when it does not fit the buffer.
[[nodiscard]] bool TemporaryFileName(const char* directory, const char* prefix,
                                     std::uint32_t unique, char* buffer, std::size_t size) noexcept;

/// Whether anything of exactly this name exists.
[[nodiscard]] bool FileExists(const char* path) noexcept;

// --- Environment ----------------------------------------------------------------------------

/// A variable of the process's environment as it is now; false when it is not set or does not fit
/// the buffer.
[[nodiscard]] bool EnvironmentValue(const char* name, char* buffer, std::size_t size) noexcept;

// --- Diagnostics ----------------------------------------------------------------------------

/// The system's text for the calling thread's last error, cut to the buffer; empty when none.
void LastErrorText(char* buffer, std::size_t size) noexcept;

enum class MessageIcon { kInformation, kError };

/// Tells a person: a modal message box where the platform has them, else caption and text on
/// standard error.
void ShowMessage(const char* text, const char* caption, MessageIcon icon) noexcept;

}  // namespace deimg::platform

#endif  // DEIMG_PLATFORM_PLATFORM_H

#include <cstdio>

#include "platform/platform.h"
#include "platform/win32/windows_api.h"

namespace deimg::platform {

void LastErrorText(char* buffer, std::size_t size) noexcept {
  // The system takes the text's address where the call asks for the text itself.
  char* text = nullptr;
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, GetLastError(), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
      reinterpret_cast<char*>(&text), 0, nullptr);
  std::snprintf(buffer, size, "%s", length != 0 ? text : "");
  LocalFree(text);
}

void ShowMessage(const char* text, const char* caption, MessageIcon icon) noexcept {
  const UINT style = icon == MessageIcon::kError ? MB_ICONERROR : MB_ICONINFORMATION;
  MessageBoxA(nullptr, text, caption, MB_OK | style);
}

}  // namespace deimg::platform

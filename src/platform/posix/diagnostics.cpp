#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/platform.h"

namespace deimg::platform {

void LastErrorText(char* buffer, std::size_t size) noexcept {
  if (size == 0) return;
  buffer[0] = '\0';
  if (errno != 0 && strerror_r(errno, buffer, size) != 0) buffer[0] = '\0';
}

void ShowMessage(const char* text, const char* caption, MessageIcon /*icon*/) noexcept {
  std::fprintf(stderr, "%s\n%s", caption, text);
}

}  // namespace deimg::platform

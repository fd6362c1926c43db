#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/platform.h"

namespace deimg::platform {
namespace {

// strerror_r comes in two forms: one fills the buffer, the other returns the text.
[[maybe_unused]] const char* Text(int failed, const char* buffer) {
  return failed == 0 ? buffer : "";
}
[[maybe_unused]] const char* Text(const char* text, const char* /*buffer*/) { return text; }

}  // namespace

void LastErrorText(char* buffer, std::size_t size) noexcept {
  char text[256] = "";
  const int error = errno;
  std::snprintf(buffer, size, "%s",
                error != 0 ? Text(strerror_r(error, text, sizeof(text)), text) : "");
}

void ShowMessage(const char* text, const char* caption, MessageIcon /*icon*/) noexcept {
  std::fprintf(stderr, "%s\n%s\n", caption, text);
}

}  // namespace deimg::platform

#include "props/diagnostics.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/platform.h"

namespace deimg {
namespace {

constexpr const char* kLevelWords[] = {"TRACE", "WARNING", "ERROR", "FATAL"};
constexpr std::int32_t kErrorLevel = 2;
constexpr std::size_t kTextSize = 512;

}  // namespace

void Print(const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  std::vprintf(format, values);
  va_end(values);
}

void FormatReport(const char* tag, std::int32_t level, const char* message, char* buffer,
                  std::size_t size) {
  if (level >= 0 && level <= 3) {
    std::snprintf(buffer, size, "%s %s: %s\n", kLevelWords[level], tag, message);
  } else {
    std::snprintf(buffer, size, "%s: %s\n", tag, message);
  }
  const std::size_t length = std::strlen(buffer);
  platform::LastErrorText(buffer + length, size - length);
}

void ReportMessage(const char* tag, std::int32_t level, const char* message) {
  char text[kTextSize];
  FormatReport(tag, level, message, text, sizeof(text));
  platform::ShowMessage(
      text, tag,
      level == kErrorLevel ? platform::MessageIcon::kError : platform::MessageIcon::kInformation);
}

}  // namespace deimg

/// The library's two ways of telling a person about an internal fault.
#ifndef DEIMG_PROPS_DIAGNOSTICS_H
#define DEIMG_PROPS_DIAGNOSTICS_H

#include <cstddef>
#include <cstdint>

namespace deimg {

/// printf-style output to the process's standard output.
[[gnu::format(printf, 1, 2)]] void Print(const char* format, ...);

/// Shows a message box: level word (0 TRACE, 1 WARNING, 2 ERROR, 3 FATAL; none for other levels),
/// tag and message on one line, then the system's text for the last error. The tag is the caption;
/// level 2 has the error icon, every other level the information icon.
void ReportMessage(const char* tag, std::int32_t level, const char* message);

/// The text ReportMessage() shows, cut to the buffer.
void FormatReport(const char* tag, std::int32_t level, const char* message, char* buffer,
                  std::size_t size);

}  // namespace deimg

#endif  // DEIMG_PROPS_DIAGNOSTICS_H

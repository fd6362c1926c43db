/// The kinds of job and the output's sample formats, as the exported function is asked for them.
#ifndef DEIMG_API_JOB_KINDS_H
#define DEIMG_API_JOB_KINDS_H

#include <deimg/deimg.h>

#include <cstdint>

namespace deimg {

struct JobKind {
  std::uint32_t flags;
  bool reduced;    // one sixth in each direction, always 8 bits
  bool quick;      // with the quick settings
  bool thumbnail;  // the reduced picture, resampled and letterboxed
};
inline constexpr JobKind kJobKinds[] = {
    {DEIMG_JOB_FULL, false, false, false},
    {DEIMG_JOB_QUICK, false, true, false},
    {DEIMG_JOB_PREVIEW, true, true, false},
    {DEIMG_JOB_THUMBNAIL, true, true, true},
};

struct OutputFormat {
  std::uint32_t format;  // the low 8 bits of the argument
  int sampleBytes;
};
inline constexpr OutputFormat kOutputFormats[] = {
    {DEIMG_FORMAT_8BIT, 1},
    {DEIMG_FORMAT_16BIT, 2},
};

/// The row of an argument; null when there is none.
constexpr const JobKind* JobKindOf(std::uint32_t flags) {
  for (const JobKind& kind : kJobKinds) {
    if (kind.flags == flags) return &kind;
  }
  return nullptr;
}
constexpr const OutputFormat* OutputFormatOf(std::uint32_t format) {
  for (const OutputFormat& row : kOutputFormats) {
    if (row.format == (format & 0xFF)) return &row;
  }
  return nullptr;
}

}  // namespace deimg

#endif  // DEIMG_API_JOB_KINDS_H

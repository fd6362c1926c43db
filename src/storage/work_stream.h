/// What every stream of the library's own has in common.
#ifndef DEIMG_STORAGE_WORK_STREAM_H
#define DEIMG_STORAGE_WORK_STREAM_H

#include "api/result.h"

namespace deimg {

/// The structure of a work stream: no progress reports, marked as the library's own.
inline CallerStream WorkStream(void* cookie) {
  CallerStream stream{};
  stream.cookie = cookie;
  stream.unused4 = 0;
  stream.unused5 = 2;
  stream.progressMode = DEIMG_PROGRESS_NEVER;
  return stream;
}

}  // namespace deimg

#endif  // DEIMG_STORAGE_WORK_STREAM_H

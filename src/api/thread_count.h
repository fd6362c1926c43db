/// How many threads a job gets.
#ifndef DEIMG_API_THREAD_COUNT_H
#define DEIMG_API_THREAD_COUNT_H

#include <string_view>

namespace deimg {

/// What a count of threads written as text means: a number from 1 to 64; as many as there are cores
/// for "0" and "all", at most 64; 0 for anything else.
[[nodiscard]] int ThreadCountOf(std::string_view text);

/// The count in the environment variable DEIMG_THREADS: 1 when it is not set or means nothing.
[[nodiscard]] int ThreadCountOfEnvironment();

}  // namespace deimg

#endif  // DEIMG_API_THREAD_COUNT_H

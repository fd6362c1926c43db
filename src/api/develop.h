/// The exported function, for programs that link the library statically and choose threads
/// themselves.
#ifndef DEIMG_API_DEVELOP_H
#define DEIMG_API_DEVELOP_H

#include "base/result.h"
#include "pipeline/bands.h"

namespace deimg {

/// Develops as DEImg_DevelopM480() does, on as many threads as the plan says.
[[nodiscard]] Result Develop(CallerStream* input, std::uint32_t flags, std::uint32_t format,
                             DevelopParams* params, CallerStream* output,
                             const ThreadPlan& threads);

}  // namespace deimg

#endif  // DEIMG_API_DEVELOP_H

#include "api/develop.h"

#include "api/develop_job.h"
#include "api/job_kinds.h"

namespace deimg {

Result Develop(CallerStream* input, std::uint32_t flags, std::uint32_t format,
               DevelopParams* params, CallerStream* output, const ThreadPlan& threads) {
  if (input == nullptr) return DEIMG_MISSING;
  const OutputFormat* const outputFormat = OutputFormatOf(format);
  if (outputFormat == nullptr) return DEIMG_UNSUPPORTED;
  const JobKind* const kind = JobKindOf(flags);
  if (kind == nullptr) return DEIMG_BAD_REQUEST;
  if (output == nullptr) return DEIMG_MISSING;
  DevelopParams ownParams{};
  return DevelopJob(*input, *kind, *outputFormat, params != nullptr ? *params : ownParams, *output,
                    threads)
      .Run();
}

}  // namespace deimg

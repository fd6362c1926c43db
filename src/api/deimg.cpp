#include <deimg/deimg.h>

#include "api/develop_job.h"
#include "api/job_kinds.h"

uint32_t DEImg_DevelopM480(CallerStream* input, uint32_t flags, uint32_t format,
                           DevelopParams* params, CallerStream* output) {
  if (input == nullptr) return DEIMG_MISSING;
  const deimg::OutputFormat* const outputFormat = deimg::OutputFormatOf(format);
  if (outputFormat == nullptr) return DEIMG_UNSUPPORTED;
  const deimg::JobKind* const kind = deimg::JobKindOf(flags);
  if (kind == nullptr) return DEIMG_BAD_REQUEST;
  if (output == nullptr) return DEIMG_MISSING;
  DevelopParams ownParams{};
  return deimg::DevelopJob(*input, *kind, *outputFormat, params != nullptr ? *params : ownParams,
                           *output)
      .Run();
}

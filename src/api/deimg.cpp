#include "api/deimg.h"

#include "api/develop_job.h"

namespace {

bool IsJob(std::uint32_t flags) {
  return flags == DEIMG_JOB_FULL || flags == DEIMG_JOB_QUICK || flags == DEIMG_JOB_PREVIEW ||
         flags == DEIMG_JOB_THUMBNAIL;
}

bool IsFormat(std::uint32_t format) {
  return (format & 0xFF) == DEIMG_FORMAT_8BIT || (format & 0xFF) == DEIMG_FORMAT_16BIT;
}

}  // namespace

uint32_t DEImg_DevelopM480(CallerStream* input, uint32_t flags, uint32_t format,
                           DevelopParams* params, CallerStream* output) {
  if (input == nullptr) return DEIMG_MISSING;
  if (!IsFormat(format)) return DEIMG_UNSUPPORTED;
  if (!IsJob(flags)) return DEIMG_BAD_REQUEST;
  if (output == nullptr) return DEIMG_MISSING;
  DevelopParams ownParams{};
  return deimg::DevelopJob(*input, flags, format, params != nullptr ? *params : ownParams, *output)
      .Run();
}

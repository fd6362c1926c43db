/// One raw file to one picture.
#ifndef DEIMG_TOOLS_DEIMG_DEVELOP_FILE_HPP
#define DEIMG_TOOLS_DEIMG_DEVELOP_FILE_HPP

#include "output_plan.hpp"
#include "progress_display.hpp"
#include "settings.hpp"

namespace deimg::cli {

/// Develops `job.input` as a job of the given kind into `job.output`. Throws Failure.
Outcome DevelopFile(const Job& job, DEImgJob kind, PictureFormat format,
                    const OutputOptions& output, const Settings& settings,
                    const host::ProgressCallback& progress);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_DEVELOP_FILE_HPP

/// What the commands that write pictures have in common: their options, and one raw file to one
/// picture.
#ifndef DEIMG_TOOLS_DEIMG_PICTURE_COMMAND_HPP
#define DEIMG_TOOLS_DEIMG_PICTURE_COMMAND_HPP

#include "batch.hpp"
#include "output_plan.hpp"
#include "settings.hpp"

namespace deimg::cli {

struct PictureCommand {
  std::vector<std::string> files;
  OutputOptions output;
  Settings settings;
  BatchOptions batch;
  DEImgJob kind = DEIMG_JOB_FULL;
  std::string suffix;  ///< of names made from an input's name
  unsigned box = 0;    ///< the picture is scaled down to fit so many pixels; 0: left as it is

  /// Adds the options; with `full`, also those that only pictures at full size have.
  void AddTo(CLI::App& command, bool full);
  int Run() const;

 private:
  Outcome Develop(const Job& job, const PictureFormat& format,
                  const host::DevelopFunction& function,
                  const host::ProgressCallback& progress) const;
};

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_PICTURE_COMMAND_HPP

#include "develop_file.hpp"

#include "interrupt.hpp"
#include "output_file.hpp"
#include "raw_input.hpp"

namespace deimg::cli {

Outcome DevelopFile(const Job& job, DEImgJob kind, PictureFormat format,
                    const OutputOptions& output, const Settings& settings,
                    const host::ProgressCallback& progress) {
  if (output.skipExisting && job.output != "-" && Exists(job.output)) return Outcome::kSkipped;
  const std::unique_ptr<host::Input> raw = OpenRaw(job.input);
  const RawInfo info = ReadRawInfo(*raw);
  RequireSupported(info, kind);
  settings.RequireFits(info);

  host::Options options;
  options.job = kind;
  options.format = output.depth == 16 ? DEIMG_FORMAT_16BIT : DEIMG_FORMAT_8BIT;
  options.settings = settings.params;
  options.progress = progress;
  options.cancel = &CancelFlag();
  WritePicture(job, format, output, SizeOf(info, kind),
               [&](const host::LineCallback& line) { host::Develop(*raw, options, line); });
  return Outcome::kDone;
}

}  // namespace deimg::cli

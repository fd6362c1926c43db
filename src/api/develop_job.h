/// One development, from the call to the return.
#ifndef DEIMG_API_DEVELOP_JOB_H
#define DEIMG_API_DEVELOP_JOB_H

#include <optional>

#include "api/job_kinds.h"
#include "api/thumbnail.h"
#include "base/result.h"
#include "pipeline/bands.h"
#include "pipeline/levels.h"
#include "props/image_geometry.h"
#include "props/image_props.h"
#include "storage/file_stream.h"
#include "storage/memory_stream.h"
#include "storage/sensor_plane.h"

namespace deimg {

/// Owns everything a job makes: whatever happens, its destructor releases it.
class DevelopJob {
 public:
  DevelopJob(CallerStream& input, const JobKind& kind, const OutputFormat& format,
             DevelopParams& params, CallerStream& output, const ThreadPlan& threads = {})
      : input_(input), kind_(kind), format_(format), params_(params), output_(output) {
    if (threads.threads > 1) bands_.emplace(threads);
  }

  [[nodiscard]] Result Run();

 private:
  [[nodiscard]] Result ReadProperties();
  [[nodiscard]] Result DeriveGeometries();
  [[nodiscard]] Result MakePlane();
  [[nodiscard]] Result FillPlane();
  [[nodiscard]] Result BalanceFromPoint();
  [[nodiscard]] Result ReducePlane();
  [[nodiscard]] Result DevelopReduced(CallerStream& output);
  /// `planeInMemory` is empty when the plane is in a file.
  [[nodiscard]] Result Develop(const MemoryStream& planeInMemory, const SensorPlane& plane,
                               const ImageGeometry& geometry, int sampleBytes,
                               CallerStream& output);
  [[nodiscard]] Result DevelopThumbnail();
  [[nodiscard]] Result DeliverThumbnail();

  [[nodiscard]] Result Report(int percent);
  [[nodiscard]] bool MeasuresPoint() const;
  void OfferBands(const MemoryStream& plane, const ImageGeometry& geometry, int sampleBytes);
  CallerStream& plane() const { return planeInMemory_ ? *planeInMemory_.get() : *planeFile_.get(); }
  SensorPlane sensorPlane() const { return {plane(), planeInMemory_.samples()}; }

  CallerStream& input_;
  const JobKind& kind_;
  const OutputFormat& format_;
  DevelopParams& params_;
  CallerStream& output_;
  const Level& level_ = ChosenLevel();

  ImageProps props_{};
  ImageGeometry geometry_{};
  ReducedGeometry reduced_{};

  // Released from the last one to the first: the helping threads end first, and the plane goes
  // before everything made from it.
  ThumbnailBuffer thumbnail_;
  MemoryStream previewPicture_;
  MemoryStream previewPlanes_;
  FileStream planeFile_;
  MemoryStream planeInMemory_;
  std::optional<Bands> bands_;  // none when the job has one thread
};

}  // namespace deimg

#endif  // DEIMG_API_DEVELOP_JOB_H

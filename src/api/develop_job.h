/// One development, from the call to the return.
#ifndef DEIMG_API_DEVELOP_JOB_H
#define DEIMG_API_DEVELOP_JOB_H

#include <cstdint>

#include "api/result.h"
#include "decode/image_geometry.h"
#include "props/image_props.h"
#include "storage/file_stream.h"
#include "storage/mem_block.h"
#include "storage/memory_stream.h"

namespace deimg {

/// Owns everything a job makes: whatever happens, its destructor releases it.
class DevelopJob {
 public:
  DevelopJob(CallerStream& input, std::uint32_t flags, std::uint32_t format, DevelopParams& params,
             CallerStream& output)
      : input_(input), flags_(flags), format_(format), params_(params), output_(output) {}

  [[nodiscard]] Result Run();

 private:
  [[nodiscard]] Result ReadProperties();
  [[nodiscard]] Result DeriveGeometries();
  [[nodiscard]] Result MakePlane();
  [[nodiscard]] Result FillPlane();
  [[nodiscard]] Result BalanceFromPoint();
  [[nodiscard]] Result DevelopFull();
  [[nodiscard]] Result ReducePlane();
  [[nodiscard]] Result DevelopReduced(CallerStream& output);
  [[nodiscard]] Result DevelopThumbnail();
  [[nodiscard]] Result DeliverThumbnail();

  bool isReduced() const { return flags_ == DEIMG_JOB_PREVIEW || flags_ == DEIMG_JOB_THUMBNAIL; }

  void ForceQuickSettings();
  [[nodiscard]] Result Report(int percent);
  CallerStream& plane() const { return planeInMemory_ ? *planeInMemory_.get() : *planeFile_.get(); }

  CallerStream& input_;
  const std::uint32_t flags_;
  const std::uint32_t format_;
  DevelopParams& params_;
  CallerStream& output_;

  ImageProps props_{};
  ImageGeometry geometry_{};
  ImageGeometry reduced_{};

  // Released from the last one to the first: the plane goes before everything made from it.
  BlockOf<std::uint8_t> thumbnail_;
  MemoryStream previewPicture_;
  MemoryStream previewPlanes_;
  FileStream planeFile_;
  MemoryStream planeInMemory_;
};

}  // namespace deimg

#endif  // DEIMG_API_DEVELOP_JOB_H

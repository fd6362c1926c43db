#include "raw_info.hpp"

#include <memory>

#include "failure.hpp"
#include "pipeline/settings.h"

namespace deimg::cli {
namespace {

constexpr const char* kDoing = "reading its properties";

void Check(uint32_t code) {
  if (code != DEIMG_OK) throw Failure(kDoing, host::CodeText(code), code);
}

}  // namespace

RawInfo ReadRawInfo(host::Input& input) {
  CallerStream& stream = *input.stream();
  RawInfo info;
  uint32_t error = 0;
  stream.Open(stream.cookie, DEIMG_OPEN_READ, &error);
  Check(error);
  ImagePropsBlock block;
  Check(ReadImagePropsBlock(stream, block));
  Check(pxfPsReadOpenImageProps(block, info.props));
  info.bigEndian = block.bigEndian;
  info.fileBytes = input.size();
  info.propertyBytes = block.blockSize;
  info.geometry = DeriveGeometry(info.props.sensor);
  info.reduced = ReduceGeometry(info.geometry);
  return info;
}

PictureSize SizeOf(const RawInfo& info, DEImgJob job) {
  if (job == DEIMG_JOB_THUMBNAIL) return {DEIMG_THUMBNAIL_WIDTH, DEIMG_THUMBNAIL_HEIGHT};
  const ImageGeometry& geometry = job == DEIMG_JOB_PREVIEW ? info.reduced : info.geometry;
  return {geometry.areaWidth, geometry.areaHeight};
}

std::optional<size_t> SensitivityClass(const RawInfo& info) {
  return IsoClassOf(static_cast<int16_t>(info.props.sensitivity()));
}

void RequireSupported(const RawInfo& info, DEImgJob job) {
  const auto refuse = [](const std::string& why) { throw Failure(kDoing, why, DEIMG_UNSUPPORTED); };
  const ImageGeometry& g = info.geometry;
  if (!IsSupported(g)) {
    refuse("a picture of " + std::to_string(g.areaWidth) + " x " + std::to_string(g.areaHeight) +
           " on a sensor of " + std::to_string(g.sensorWidth) + " x " +
           std::to_string(g.sensorHeight) + " cannot be developed");
  }
  const bool reducing = job == DEIMG_JOB_PREVIEW || job == DEIMG_JOB_THUMBNAIL;
  if (reducing && !IsSupportedReduced(info.reduced)) {
    refuse("the picture is too small for a preview");
  }
  if (!SensitivityClass(info)) {
    refuse("the recorded sensitivity " + std::to_string(info.props.sensitivity()) +
           " is none of this camera's");
  }
}

}  // namespace deimg::cli

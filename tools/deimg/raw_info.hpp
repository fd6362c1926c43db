/// What a raw file says about itself.
#ifndef DEIMG_TOOLS_DEIMG_RAW_INFO_HPP
#define DEIMG_TOOLS_DEIMG_RAW_INFO_HPP

#include <deimg/streams.hpp>
#include <optional>

#include "props/image_geometry.h"
#include "props/image_props.h"

namespace deimg::cli {

/// The recorded properties and the geometry that follows from them.
struct RawInfo {
  bool bigEndian = false;
  uint64_t fileBytes = 0;
  uint32_t propertyBytes = 0;
  ImageProps props{};
  ImageGeometry geometry{};
  ImageGeometry reduced{};
};

/// Reads the properties of a raw file. Throws Failure.
RawInfo ReadRawInfo(host::Input& input);

/// Width and height of the picture that a job delivers.
struct PictureSize {
  uint32_t width;
  uint32_t height;
};
PictureSize SizeOf(const RawInfo& info, DEImgJob job);

/// 0 to 4; none for a sensitivity that this camera does not have.
std::optional<size_t> SensitivityClass(const RawInfo& info);

/// Throws Failure, in words more exact than a result code, when the library would refuse this
/// geometry or sensitivity.
void RequireSupported(const RawInfo& info, DEImgJob job);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_RAW_INFO_HPP

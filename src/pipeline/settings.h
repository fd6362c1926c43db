/// From the host's settings block to the settings of one development.
#ifndef DEIMG_PIPELINE_SETTINGS_H
#define DEIMG_PIPELINE_SETTINGS_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/result.h"
#include "props/image_props.h"
#include "stages/stage_context.h"

namespace deimg {

/// On entry: writes the defaults into a block that the host did not fill, and clears gains that are
/// not valid or not wanted by the white-balance preset.
void ApplyDefaults(DevelopParams& params);

/// Forces what quick developments, previews and thumbnails are made with.
void ForceQuickSettings(DevelopParams& params);

/// Fills the settings from the host's block, taking every field at "as recorded" from the file, and
/// gains that the host did not give from the file's white-balance table. The gains are written back
/// to the host's block.
///
/// @return DEIMG_UNSUPPORTED when a preset outside the file's tables would be needed.
[[nodiscard]] Result ResolveSettings(DevelopParams& params, const ImageProps& props,
                                     DevelopSettings& settings);

/// The class of a recorded sensitivity, 0 to 4; none for one that the camera does not have.
[[nodiscard]] std::optional<std::size_t> IsoClassOf(std::int16_t sensitivity);

/// Fills in the sensitivity class and the index of the processing set, by which tuning is chosen.
/// DEIMG_UNSUPPORTED for a sensitivity that the camera does not have, or a set that does not exist.
[[nodiscard]] Result ResolveIndices(const ImageProps& props, DevelopSettings& settings);

}  // namespace deimg

#endif  // DEIMG_PIPELINE_SETTINGS_H

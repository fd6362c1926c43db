/// Everything that the stages of one development are given, derived in one go.
#ifndef DEIMG_PIPELINE_DEVELOPMENT_H
#define DEIMG_PIPELINE_DEVELOPMENT_H

#include "base/result.h"
#include "props/image_props.h"
#include "stages/stage_context.h"

namespace deimg {

struct Development {
  DevelopSettings settings;
  DevelopmentTables tables;
  TuningBlock tuning;

  /// Resolves the settings and derives tables and tuning from them; the white-balance gains used
  /// are written back to the host's block.
  ///
  /// @return DEIMG_UNSUPPORTED or DEIMG_BAD_TUNING.
  [[nodiscard]] Result Derive(DevelopParams& params, const ImageProps& props);

  /// For the stages of one graph; refers to both.
  [[nodiscard]] StageContext ContextOf(const ImageGeometry& geometry) const {
    return {settings, tables, tuning, geometry};
  }
};

}  // namespace deimg

#endif  // DEIMG_PIPELINE_DEVELOPMENT_H

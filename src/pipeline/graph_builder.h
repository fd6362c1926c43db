/// From a decoded plane to the developed picture.
#ifndef DEIMG_PIPELINE_GRAPH_BUILDER_H
#define DEIMG_PIPELINE_GRAPH_BUILDER_H

#include "base/result.h"
#include "pipeline/levels.h"
#include "props/image_geometry.h"
#include "props/image_props.h"

namespace deimg {

/// Resolves the settings, derives the tables, builds the processing graph, runs it to the output
/// and destroys it again.
///
/// @param level        the instruction level whose code runs.
/// @param plane        the sensor plane, black levels removed, or a reduced one.
/// @param geometry     of that plane: its size, and the image area that is delivered.
/// @param params       defaults applied; the white-balance gains used are written back.
/// @param sampleBytes  of the output: 1 or 2.
/// @param bands        what other threads develop of the same picture meanwhile; null without them.
/// @return DEIMG_BAD_TUNING, DEIMG_UNSUPPORTED, DEIMG_OUT_OF_MEMORY, DEIMG_MISSING, or a code of a
///         stream.
[[nodiscard]] Result GraphBuilder(const Level& level, const SensorPlane& plane,
                                  const ImageGeometry& geometry, DevelopParams& params,
                                  const ImageProps& props, int sampleBytes, CallerStream& output,
                                  Bands* bands = nullptr);

}  // namespace deimg

#endif  // DEIMG_PIPELINE_GRAPH_BUILDER_H

/// From a decoded plane to the developed picture.
#ifndef DEIMG_GRAPH_GRAPH_BUILDER_H
#define DEIMG_GRAPH_GRAPH_BUILDER_H

#include <cstdint>

#include "api/result.h"
#include "props/image_props.h"

namespace deimg {

/// Settles the settings, derives the tables, builds the processing graph, runs it to the output and
/// destroys it again.
///
/// @param plane   the sensor plane, black levels removed; sensor size and image area are those of
///                the properties' sensor record.
/// @param params  defaults applied; the white-balance gains used are written back.
/// @param format  DEIMG_FORMAT_16BIT in the low 8 bits gives 16-bit samples, everything else 8-bit.
/// @return DEIMG_BAD_TUNING, DEIMG_UNSUPPORTED, DEIMG_OUT_OF_MEMORY, or a code of a stream.
[[nodiscard]] Result GraphBuilder(CallerStream& plane, DevelopParams& params,
                                  const ImageProps& props, std::uint32_t format,
                                  CallerStream& output);

}  // namespace deimg

#endif  // DEIMG_GRAPH_GRAPH_BUILDER_H

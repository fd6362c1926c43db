/// Everything that the code of a level includes from outside it. A level's source includes this
/// before its target region, so that inline functions with linkage are compiled for every machine.
#ifndef DEIMG_PIPELINE_LEVEL_COMMON_H
#define DEIMG_PIPELINE_LEVEL_COMMON_H

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "base/byte_order.h"
#include "base/rounding.h"
#include "decode/plane_lines.h"
#include "graph/stage.h"
#include "line/arithmetic.h"
#include "line/look_up.h"
#include "pipeline/levels.h"
#include "stages/colour/chroma_gain_curve.h"
#include "stages/colour/suppression_curve.h"
#include "stages/luma/apc_curve.h"
#include "stages/luma/detail_gain.h"
#include "stages/stage_context.h"
#include "stages/tone_curves.h"
#include "storage/mem_block.h"
#include "storage/sensor_plane.h"
#include "storage/stream_calls.h"

// A target region: DEIMG_BEGIN_TARGET("avx2") ... DEIMG_END_TARGET. Every function between the two
// may use what the string names, and nothing outside them does.
#define DEIMG_PRAGMA(text) _Pragma(#text)
#if defined(__clang__)
#define DEIMG_BEGIN_TARGET(features) \
  DEIMG_PRAGMA(clang attribute push(__attribute__((__target__(features))), apply_to = function))
#define DEIMG_END_TARGET DEIMG_PRAGMA(clang attribute pop)
#else
#define DEIMG_BEGIN_TARGET(features) \
  DEIMG_PRAGMA(GCC push_options)     \
  DEIMG_PRAGMA(GCC target(features))
#define DEIMG_END_TARGET DEIMG_PRAGMA(GCC pop_options)
#endif

#endif  // DEIMG_PIPELINE_LEVEL_COMMON_H

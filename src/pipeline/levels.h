/// The instruction levels: the stages, the wiring and the plane's loops, compiled for each.
///
/// A level is one source in levels/ and one row in levels.cpp. The source includes everything
/// common first, then opens a target region and compiles the "-inl.h" files in a namespace of the
/// level's own, so that no code of one level can reach another. All levels give the same bytes.
#ifndef DEIMG_PIPELINE_LEVELS_H
#define DEIMG_PIPELINE_LEVELS_H

#include <span>
#include <string_view>

#include "decode/plane_lines.h"
#include "pipeline/processing_graph.h"
#include "storage/sensor_plane.h"

namespace deimg {

/// What a level's source hands out.
struct LevelCode {
  /// Makes a graph whose lines have 16 bits, to be used if its ranges fit, and one of 32-bit lines.
  using Factory = GraphOwner (*)(const SensorPlane& plane, const StageContext& context,
                                 int outputSampleBytes);
  Factory makeNarrowGraph;
  Factory makeWideGraph;
  PlaneLines planeLines;
};

struct Level {
  const char* name;
  const LevelCode& code;
  bool (*isSupported)();  // whether this processor has all that the code uses

  const PlaneLines& planeLines() const { return code.planeLines; }

  /// The graph for these settings: narrow when all its ranges fit; null when memory is short.
  [[nodiscard]] GraphOwner MakeGraph(const SensorPlane& plane, const StageContext& context,
                                     int outputSampleBytes) const;
};

/// The levels of this build, the lowest first.
[[nodiscard]] std::span<const Level> Levels();

/// The best level of this build that this processor has, none above the one named `highest`; an
/// empty name sets no limit.
[[nodiscard]] const Level& BestLevel(std::string_view highest);

/// The level that jobs use, chosen once per process.
[[nodiscard]] const Level& ChosenLevel();

}  // namespace deimg

#endif  // DEIMG_PIPELINE_LEVELS_H

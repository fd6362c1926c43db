/// Every kind of job, and small files that each of them develops.
#ifndef DEIMG_TESTS_SUPPORT_JOB_KINDS_H
#define DEIMG_TESTS_SUPPORT_JOB_KINDS_H

#include <gtest/gtest.h>

#include "rawfile/random_camera.h"
#include "support/fault_heap.h"
#include "support/streams.h"

namespace deimg::testing {

struct JobKind {
  const char* name;
  std::uint32_t flags;
  bool point;  ///< white balance from the middle of the picture
};

inline constexpr JobKind kJobKinds[] = {{"full", DEIMG_JOB_FULL, false},
                                        {"quick", DEIMG_JOB_QUICK, false},
                                        {"preview", DEIMG_JOB_PREVIEW, false},
                                        {"thumbnail", DEIMG_JOB_THUMBNAIL, false},
                                        {"point", DEIMG_JOB_FULL, true}};

inline bool IsReduced(const JobKind& kind) { return kind.flags >= DEIMG_JOB_PREVIEW; }

/// A random camera whose whole plane of about 60 x 30 samples is the picture.
inline rawfile::RawFile SmallCamera(std::uint64_t seed) {
  rawfile::RawFile file = rawfile::RandomCamera(
      seed, {.minWidth = 48, .maxWidth = 70, .minHeight = 24, .maxHeight = 36});
  const auto right = static_cast<std::uint16_t>(file.plane.width - 1);
  const auto bottom = static_cast<std::uint16_t>(file.plane.height - 1);
  file.properties.sensor.area = {0, 0, right, bottom};
  return file;
}

inline DevelopParams ParamsOf(const JobKind& kind) {
  DevelopParams params = RecordedParams();
  if (kind.point) params.wbPreset = DEIMG_WB_POINT;
  params.wbPointX = params.wbPointY = 3;
  return params;
}

/// A heap too small for the planes of small files and what has to remain besides them.
inline HeapFaults PlaneInFile() { return {.largest = 1u << 20}; }

inline std::uint32_t RunJob(const JobKind& kind, InputStream& input, OutputStream& output) {
  DevelopParams params = ParamsOf(kind);
  return DEImg_DevelopM480(input.get(), kind.flags, DEIMG_FORMAT_8BIT, &params, output.get());
}

/// Runs a job under faults of the heap and of the streams; nothing of the heap may be kept.
inline Outcome RunJob(const JobKind& kind, const std::vector<std::uint8_t>& file,
                      const HeapFaults& heap, const Fault& atInput = {},
                      const Fault& atOutput = {}) {
  InputStream input(file, atInput);
  OutputStream output(DEIMG_PROGRESS_ALL, atOutput);
  const std::int64_t liveBefore = FaultScope::Live();
  const FaultScope scope(heap);
  Outcome outcome;
  outcome.result = RunJob(kind, input, output);
  outcome.lines = std::move(output.lines);
  outcome.reports = std::move(output.reports);
  EXPECT_EQ(FaultScope::Live(), liveBefore);
  return outcome;
}

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_JOB_KINDS_H

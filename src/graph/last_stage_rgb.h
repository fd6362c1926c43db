/// The graph's last component: red, green and blue lines for the host.
#ifndef DEIMG_GRAPH_LAST_STAGE_RGB_H
#define DEIMG_GRAPH_LAST_STAGE_RGB_H

#include "graph/component.h"
#include "graph/stage_context.h"

namespace deimg {

/// Joins the 13-bit luminance of "YMain Procs" with the colour differences of the colour-system
/// stage. Its port holds R, G and B of every pixel of the plane's line, interleaved and clipped to
/// the output range: one byte a sample, or two in little-endian order.
class LastStageRgb final : public ComponentX {
 public:
  /// `sampleBytes` is 1 or 2: 8-bit or 16-bit output.
  LastStageRgb(const StageContext& context, int sampleBytes, const SensorRecord& sensor);

  [[nodiscard]] Result Run(int first, int last) override;

  /// Hands the part of the current line that lies inside the image area to the output's Write.
  [[nodiscard]] Result Deliver(CallerStream& output);

 private:
  const Kernels& kernels_;
  const SensorRecord& sensor_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_LAST_STAGE_RGB_H

/// Kernels of the stage in ymain_procs.h.
#ifndef DEIMG_STAGES_LUMA_YMAIN_PROCS_KERNELS_H
#define DEIMG_STAGES_LUMA_YMAIN_PROCS_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/kernels.h"
#include "graph/line.h"

namespace deimg {

static constexpr Sample kHighestLuminance = 8191;

/// y / 8, clipped.
static void ScaleLuminanceLine(Line y, int width, MutableLine out) {
  for (Index x = 0; x < width; ++x) out[x] = ClampedQuotient(y[x], 3, 0, kHighestLuminance);
}

/// Adds the details, weighted by level.
static void AddDetailsLine(Line y, const DetailLines& details, const DetailGain& gain, int width,
                           MutableLine out) {
  const Line hNarrow = details.hNarrow, hWide = details.hWide, r = details.r, v = details.v,
             a = details.a;
  const Sample rise = gain.rise, riseEnd = gain.riseEnd;
  const Sample hold = gain.hold, holdEnd = gain.holdEnd;
  const Sample fall = gain.fall, end = gain.end, negativeScale = gain.negativeScale;
  const auto enhanced = [&](Index x, Sample brightness, int shift) {
    const Sample level = ClampedQuotient(brightness, shift, 0, DetailGain::kHighestLevel);
    const Sample falling = Max(end - level, 0) * fall;
    const Sample weight = level < riseEnd ? level * rise : level < holdEnd ? hold : falling;
    const Sample detail = weight * (hNarrow[x] + hWide[x] + r[x] + v[x] + a[x]) / 128;
    const Sample sum = y[x] + (detail < 0 ? detail * negativeScale / 1024 : detail);
    return ClampedQuotient(sum, 3, 0, kHighestLuminance);
  };
  const Index ends[] = {0, 1, width - 3, width - 2, width - 1};
  for (const Index x : ends) out[x] = enhanced(x, y[x], 6);
  for (Index x = 2; x < width - 3; ++x) {
    out[x] = enhanced(x, y[x - 2] + y[x + 2] + 2 * (y[x - 1] + y[x] + y[x + 1]), 9);
  }
}

/// In place: lowers the luminance where a colour difference exceeds the threshold.
static void CorrectByChromaLine(Line cr, Line cb, const ChromaCorrection& correction, int width,
                                MutableLine y) {
  const Sample threshold = correction.threshold;
  const Sample gainCr = correction.gainCr;
  const Sample gainCb = correction.gainCb;
  for (Index x = 0; x < width; ++x) {
    const Sample excessCr = Max(0, cr[x] - threshold);
    const Sample excessCb = Max(0, cb[x] - threshold);
    const Sample twice = 2 * y[x] - (excessCr * gainCr + excessCb * gainCb) / 16 + 1;
    y[x] = ClampedQuotient(twice, 1, 0, kHighestLuminance);
  }
}

}  // namespace deimg

#endif  // DEIMG_STAGES_LUMA_YMAIN_PROCS_KERNELS_H

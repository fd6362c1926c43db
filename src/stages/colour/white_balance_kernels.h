/// Kernels of the stage in white_balance.h.
#ifndef DEIMG_STAGES_COLOUR_WHITE_BALANCE_KERNELS_H
#define DEIMG_STAGES_COLOUR_WHITE_BALANCE_KERNELS_H

#include "graph/kernel_math.h"
#include "graph/line.h"

namespace deimg {

/// Gains have this value for a factor of 1; every sample is lifted by the pedestal.
static constexpr Sample kGainOne = 1024;
static constexpr Sample kPedestal = 128;
static constexpr Sample kHighestRawSample = 4095;

/// Gain, pedestal and clip on one line whose even and odd columns have a gain each.
template <typename T>
static void WhiteBalanceLine(LineOf<std::uint16_t> in, int width, Sample evenGain, Sample oddGain,
                             Sample clipLevel, MutableLineOf<T> out) {
  ColumnOf<Sample> column = 0;
  for (Index x = 0; x < width; ++x, ++column) {
    const Sample gain = ByParity<Sample>(column, evenGain, oddGain);
    out[x] = static_cast<T>(Min(in[x] * gain / kGainOne + kPedestal, clipLevel));
  }
}

/// Looks raw samples up; larger ones than the table holds count as its last.
static void ExposureLine(LineOf<std::uint16_t> in, int width, const std::uint16_t* table,
                         MutableLineOf<std::uint16_t> out) {
  for (Index x = 0; x < width; ++x) out[x] = table[Min<Sample>(in[x], kHighestRawSample)];
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_WHITE_BALANCE_KERNELS_H

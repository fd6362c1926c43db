/// The line kernels of all stages, one table per instruction level.
///
/// Kernels are plain loops over whole lines, written once (stages/*/..._kernels.h) and compiled for
/// every level by stages/kernels.cpp. All levels give the same bytes; a job takes the best one that
/// the processor has. What a kernel computes is said where it is written.
#ifndef DEIMG_GRAPH_KERNELS_H
#define DEIMG_GRAPH_KERNELS_H

#include <cstdint>

#include "graph/line.h"

namespace deimg {

/// The four colour planes of one line.
template <typename T>
struct PlaneLines {
  T* r;
  T* gr;  // green from the greens of red lines
  T* gb;  // green from the greens of blue lines
  T* b;
};

/// The seven lines around the one computed, from three above to three below.
template <typename T>
struct SevenLines {
  const T* line[7];
};

/// The five detail lines that sharpen the luminance.
struct DetailLines {
  const Sample* hNarrow;
  const Sample* hWide;
  const Sample* r;
  const Sample* v;
  const Sample* a;
};

/// The A-filter's gain by the size of the direction measure, in 32nds: 0 up to `core`, then a ramp
/// of `step` eighths per unit, and full gain from `full` on.
struct AFilterGain {
  static constexpr Sample kFull = 32;
  static constexpr Sample kLargestSize = 256;  // counted as this, and always full gain

  Sample core;
  Sample step;
  Sample full;
};

/// The gain of the details by brightness level, 128 = 1.0: level x `rise` below `riseEnd`, then
/// `hold` below `holdEnd`, then `fall` for each level below `end`, and 0.
struct DetailGain {
  static constexpr Sample kHighestLevel = 1023;

  Sample rise;
  Sample riseEnd;
  Sample hold;
  Sample holdEnd;
  Sample fall;
  Sample end;
  Sample negativeScale;  // of darkening detail, 1024 = 1.0
};

/// Threshold and gains of the luminance correction by colour difference.
struct ChromaCorrection {
  Sample threshold;
  Sample gainCr;
  Sample gainCb;
};

/// A coring and gain curve for samples divided by 2 to the power of `shift`: three straight
/// segments over the magnitudes 0 to `last`, meeting at two knees. A segment is (i x slope +
/// offset) / 2048, truncated, cut to 16 bits, and 0 where that is negative. An entry at a knee
/// belongs to the later segment.
struct ApcSegments {
  int shift;
  Sample knee1;
  Sample knee2;
  Sample last;
  Sample slope[3];
  Sample offset[3];
  bool overflows;  // some entry does not fit in 16 bits
};

/// A line of grid sums in the preview's reduction, split into every third sample; the first third
/// has one sample more than the others.
struct ShrinkLines {
  const Sample* third[3];
};

/// Kernels that read or write samples of the mosaic, or interpolated from it, of type T.
template <typename T>
struct MosaicKernels {
  void (*whiteBalanceLine)(const std::uint16_t* in, int width, Sample evenGain, Sample oddGain,
                           Sample clipLevel, T* out);
  void (*directionMeasureLine)(const T* u2, const T* u1, const T* m, const T* d1, const T* d2,
                               int width, T* out);
  void (*interpolateMosaicLine)(const T* above, const T* centre, const T* below, bool oddLine,
                                int width, const PlaneLines<T>& out);
  void (*exchangeGreensLine)(const T* direction, Sample threshold, int width, T* gr, T* gb);
  void (*colourDifferenceLine)(const T* direction, Sample threshold, bool choose, const T* gr,
                               const T* gb, int width, T* red, T* blue);
  void (*medianLine)(const T* above, const T* centre, const T* below, int width, T* lowest,
                     T* middle, T* highest, T* out);
  void (*matrixRowLine)(const T* r, const T* gr, const T* b, const T* gb, const std::int16_t* row,
                        int width, MutableLine out);
  void (*matrixPairLine)(const T* redMinusGreen, const T* blueMinusGreen, Sample mRed, Sample mBlue,
                         int width, MutableLine out);
  void (*suppressionLevelLine)(const T* r, const T* b, Line luminance, int width,
                               NarrowSample* level);
  void (*spreadEvenColumnsLine)(const T* in, int width, T* out);
  void (*spreadOddColumnsLine)(const T* in, int width, T* out);
  void (*verLpfLine)(const SevenLines<T>& in, const Sample* taps, bool oddLine, int width,
                     MutableLine out);
  void (*aFilterLine)(const T* direction, Line vertical, Line both, const T* horizontal,
                      const AFilterGain& gain, int width, MutableLine out);
  void (*verticalHighPass3Line)(const T* u2, const T* m, const T* d2, int width, MutableLine out);
  void (*verticalHighPass7Line)(const SevenLines<T>& in, int width, MutableLine out);
  void (*verticalSmooth5Line)(const SevenLines<T>& in, int width, MutableLine out);
  void (*verticalSmooth7Line)(const SevenLines<T>& in, const Sample* taps, int width,
                              MutableLine out);
  void (*sharpenLine)(const SevenLines<T>& in, Line smooth0, Line smooth1, Sample weight,
                      const ApcSegments& curve, int width, MutableLine out);
  void (*mixLine)(const T* r, const T* b, const std::int16_t* weights, Sample pedestal, int width,
                  MutableLine y);
};

struct Kernels {
  MosaicKernels<NarrowSample> narrowMosaic;
  MosaicKernels<Sample> wideMosaic;
  template <typename T>
  const MosaicKernels<T>& mosaic() const;

  // Last stage.
  void (*rgbLine8)(Line y, Line cr, Line cb, int width, std::uint8_t* planes, std::uint8_t* rgb);
  void (*rgbLine16)(Line y, Line cr, Line cb, int width, std::uint16_t* planes, std::uint16_t* rgb);

  // Colour path.
  void (*exposureLine)(const std::uint16_t* in, int width, const std::uint16_t* table,
                       std::uint16_t* out);
  void (*largestLevelLine)(const NarrowSample* level, int width, NarrowSample* largest);
  void (*suppressLine)(Line in, Line curve, Sample gain, int width, MutableLine out);
  void (*toRgbLine9)(Line luminance, Line c1, Line c2, const Sample* black, int width,
                     MutableLine r, MutableLine g, MutableLine b);
  void (*toRgbLine7)(Line luminance, Line c1, Line c2, const Sample* black, int width,
                     MutableLine r, MutableLine g, MutableLine b);
  void (*toColourDifferencesLine)(Line r, int width, MutableLine gToCr, MutableLine bToCb);
  void (*chromaLevelLine)(Line cr, Line cb, int width, MutableLine level);
  void (*adjustColourDifferencesLine)(Line gain, const std::int16_t* mix, int width, MutableLine cr,
                                      MutableLine cb);

  // Luminance path.
  void (*horLpfLine)(Line in, const Sample* taps, int tapCount, Sample divisor, int width,
                     MutableLine out);
  void (*addDetailLine)(Line luminance, Line detail, Sample gain, Sample mixGain, int width,
                        MutableLine mixed, MutableLine enhanced);
  void (*apcCurveLine)(Line in, const ApcSegments& curve, int width, MutableLine out);
  void (*narrowHighPassLine)(Line in, const ApcSegments& curve, int width, MutableLine out);
  void (*wideHighPassLine)(Line in, const ApcSegments& curve, int width, MutableLine out);
  void (*smoothDetailLine)(Line in, const ApcSegments& curve, int width, MutableLine out);
  void (*horizontalSmooth121Line)(Line in, int width, MutableLine out);
  void (*horizontalSmooth5Line)(Line in, Sample centre, Sample far, Sample border, int width,
                                MutableLine out);
  void (*scaleLuminanceLine)(Line y, int width, MutableLine out);
  void (*addDetailsLine)(Line y, const DetailLines& details, const DetailGain& gain, int width,
                         MutableLine out);
  void (*correctByChromaLine)(Line cr, Line cb, const ChromaCorrection& correction, int width,
                              MutableLine y);

  // Sensor plane.
  void (*mergeLowBitsLine)(const std::uint8_t* lowBits, int count, std::uint16_t* samples);
  void (*subtractLevelsLine)(std::uint16_t evenColumns, std::uint16_t oddColumns, int width,
                             std::uint16_t* line);

  // Preview reduction.
  void (*splitPositionLine)(const std::uint16_t* line, int cells, std::uint16_t* picked,
                            std::uint16_t* first, std::uint16_t* second, std::uint16_t* third);
  void (*weightGridLine)(const std::uint16_t* g0, const std::uint16_t* g1, const std::uint16_t* g2,
                         const std::uint16_t* g3, const Sample* weights, int count,
                         MutableLine out);
  void (*shrinkRow)(const ShrinkLines& a, const ShrinkLines& b, int cells, std::uint16_t* row);
  void (*halveRow)(const std::uint16_t* r0, const std::uint16_t* r1, const std::uint16_t* r2,
                   const std::uint16_t* r3, int count, std::uint16_t* out);
};

template <>
inline const MosaicKernels<NarrowSample>& Kernels::mosaic<NarrowSample>() const {
  return narrowMosaic;
}
template <>
inline const MosaicKernels<Sample>& Kernels::mosaic<Sample>() const {
  return wideMosaic;
}

enum class KernelLevel { kBaseline, kAvx2, kAvx512 };
inline constexpr KernelLevel kKernelLevels[] = {KernelLevel::kBaseline, KernelLevel::kAvx2,
                                                KernelLevel::kAvx512};

/// The kernels of a level; null when this build or this processor does not have it.
[[nodiscard]] const Kernels* KernelsOf(KernelLevel level);

/// The kernels that jobs use: the best level there is, chosen once per process.
[[nodiscard]] const Kernels& ChosenKernels();

}  // namespace deimg

#endif  // DEIMG_GRAPH_KERNELS_H

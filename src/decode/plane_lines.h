/// Loops over lines of the sensor plane, handed to the decoder by the instruction level of the job.
#ifndef DEIMG_DECODE_PLANE_LINES_H
#define DEIMG_DECODE_PLANE_LINES_H

#include <cstdint>

namespace deimg {

/// A line of grid sums in the preview's reduction, split into every third sample. The fourth line
/// is the first one from its second sample on: a pointer that compilers do not see through, so that
/// they do not carry its samples from one turn of the loop to the next.
struct ShrinkLines {
  const std::int32_t* third[4];
};

/// What each one computes is said where it is written, in plane_lines-inl.h.
struct PlaneLines {
  // Decoding and black levels.
  void (*accumulate)(const std::int16_t* differences, const std::uint8_t* lowBits, int count,
                     std::uint16_t* predictors, std::uint16_t* samples);
  void (*subtractLevels)(std::uint16_t evenColumns, std::uint16_t oddColumns, int width,
                         std::uint16_t* line);
  // Preview reduction.
  void (*splitPosition)(const std::uint16_t* line, int cells, std::uint16_t* picked,
                        std::uint16_t* first, std::uint16_t* second, std::uint16_t* third);
  void (*weightGrid)(const std::uint16_t* g0, const std::uint16_t* g1, const std::uint16_t* g2,
                     const std::uint16_t* g3, int count, std::int32_t* at0, std::int32_t* at1,
                     std::int32_t* at2, std::int32_t* at3);
  void (*shrinkRow)(const ShrinkLines& a, const ShrinkLines& b, int cells, std::uint16_t* row);
  void (*halveRow)(const std::uint16_t* r0, const std::uint16_t* r1, const std::uint16_t* r2,
                   const std::uint16_t* r3, int count, std::uint16_t* out);
};

}  // namespace deimg

#endif  // DEIMG_DECODE_PLANE_LINES_H

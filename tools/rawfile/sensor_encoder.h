/// Lossless compression of the sensor plane.
///
/// A sample's upper bits (sample / 4) are predicted from the sample two columns to the left; both
/// predictors of a line start at 512. Blocks of 64 consecutive samples hold the differences: the
/// first one as its difference from the first one of the block before, the other 63 as words for a
/// run of zeros and the size of the difference behind it, each followed by the difference itself.
/// The two low bits of all samples are stored in front of the coded data.
#ifndef DEIMG_RAWFILE_SENSOR_ENCODER_H
#define DEIMG_RAWFILE_SENSOR_ENCODER_H

#include "rawfile/bytes.h"

namespace deimg::rawfile {

/// The sensor's samples in raster order: red and green on even lines, green and blue on odd ones.
struct Plane {
  uint32_t width = 0;  ///< even
  uint32_t height = 0;
  std::vector<uint16_t> samples;  ///< 0 to 4095 on a real sensor
};

/// What the file records about its coding.
struct DecoderSettings {
  uint32_t codeSet = 0;    ///< 0, 1; any other value is set 2
  uint32_t dataSkip1 = 0;  ///< unused bytes in front of the coded data: the sum of both,
  uint32_t dataSkip2 = 0;  ///< below 65,536
};

/// Freedoms of the coder that a decoder does not see.
struct CodingOptions {
  uint8_t stuffing = 0;  ///< value of the byte that follows every 0xFF
  uint8_t filler = 0;    ///< value of skipped and padding bytes
  /// Zeros at the end of a block are written as runs where these reach entry 63 exactly, and by the
  /// end word elsewhere.
  bool runsToLastEntry = false;
  /// The data behind the low bits, skipped bytes included, are padded to this size. Decoders insist
  /// on 65,536.
  size_t minimumCodedSize = 65536;
};

/// The low-bit block and the coded data.
///
/// Only whole blocks are coded: the last width * height % 64 samples have to be 0, which is what
/// decoders leave there.
/// @throws WriteError when a difference between samples of more than 12 bits has no code word, when
///         the tail is not 0, or when the geometry or the skips are impossible.
Bytes EncodeSensorData(const Plane& plane, const DecoderSettings& settings,
                       const CodingOptions& options = {});

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_SENSOR_ENCODER_H

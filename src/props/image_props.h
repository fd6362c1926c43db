/// What the library takes from a raw file's properties.
#ifndef DEIMG_PROPS_IMAGE_PROPS_H
#define DEIMG_PROPS_IMAGE_PROPS_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "base/result.h"
#include "props/tuning_block.h"
#include "storage/mem_block.h"

namespace deimg {

/// The sensor record: seventeen words that place the picture on the sensor. Rectangles are given by
/// their first and last column and line, inclusive.
struct SensorRecord {
  std::uint16_t word0;
  std::uint16_t width;
  std::uint16_t height;
  std::uint16_t words3[2];
  std::uint16_t areaLeft;
  std::uint16_t areaTop;
  std::uint16_t areaRight;
  std::uint16_t areaBottom;
  std::uint16_t auxLeft;
  std::uint16_t auxTop;
  std::uint16_t auxRight;
  std::uint16_t auxBottom;
  std::uint16_t words13[4];
};

/// Fourteen properties of a raw file, in the machine's byte order; the typed view of their words.
/// A property shorter than its slot leaves the rest zero.
struct ImageProps {
  static constexpr int kPresets = 7;
  static constexpr int kTuningTableWords = 682;

  std::uint32_t slot0[2];
  std::uint32_t slot1[7];
  char slot2[32];
  std::uint16_t shooting[27];  // 3: what the camera did
  std::uint16_t levels[43];    // 4: what the photographer chose
  std::uint16_t slot5[5];
  SensorRecord sensor;       // 6
  std::uint32_t decoder[4];  // 7
  std::uint16_t slot8[13];
  std::uint16_t slot9[13];
  std::uint16_t tuningTables[kTuningTableWords];  // 10: words 1 onward, a little-endian stream
  std::uint16_t colourTemperatures[8];            // 11: kelvin; word 0 serves preset -1
  std::uint16_t whiteBalanceHead;                 // 12
  std::uint16_t presetGains[kPresets][4];         // 12: red, green, green, blue
  std::uint16_t blackLevelWords[4];               // 12: by mosaic position index
  std::uint8_t tuningBlock[TuningBlock::kSize];   // 13

  std::uint16_t sensitivity() const { return shooting[2]; }
  std::int16_t recordedPreset() const { return static_cast<std::int16_t>(shooting[7]); }
  std::int16_t recordedToneLevel() const { return static_cast<std::int16_t>(levels[13]); }
  std::int16_t recordedMatrixLevel() const { return static_cast<std::int16_t>(levels[14]); }
  std::int16_t recordedProcessingSet() const { return static_cast<std::int16_t>(levels[15]); }
  std::int16_t recordedColourLevel() const { return static_cast<std::int16_t>(levels[42]); }
  std::uint32_t codeSetIndex() const { return decoder[0]; }
  std::uint32_t dataSkip1() const { return decoder[1]; }
  std::uint32_t dataSkip2() const { return decoder[2]; }
};

static_assert(std::is_trivially_copyable_v<ImageProps>);
static_assert(sizeof(SensorRecord) == 34);
static_assert(sizeof(ImageProps) == 4796);
static_assert(offsetof(ImageProps, shooting) == 68);
static_assert(offsetof(ImageProps, levels) == 122);
static_assert(offsetof(ImageProps, sensor) == 218);
static_assert(offsetof(ImageProps, decoder) == 252);
static_assert(offsetof(ImageProps, tuningTables) == 320);
static_assert(offsetof(ImageProps, colourTemperatures) == 1684);
static_assert(offsetof(ImageProps, whiteBalanceHead) == 1700);
static_assert(offsetof(ImageProps, tuningBlock) == 1766);

/// The raw file's image property block, brought into memory.
struct ImagePropsBlock {
  std::uint32_t blockSize = 0;
  bool bigEndian = false;
  std::uint32_t blockOffset = 0;  // from the start of the top heap
  BlockOf<std::uint8_t> blockData;
};

/// Reads the image property block from the raw file, which the caller has opened.
///
/// @return DEIMG_PROPS_UNREADABLE, DEIMG_PROPS_DIRECTORY_TOO_LARGE, DEIMG_PROPS_OUT_OF_MEMORY or an
///         error word of the stream. A file without the block gives an empty one.
[[nodiscard]] Result ReadImagePropsBlock(CallerStream& input, ImagePropsBlock& block);

/// Copies the fourteen properties, searched by tag anywhere in the block, into their slots.
///
/// @return DEIMG_PROPS_UNREADABLE when one is missing or lies outside its heap.
[[nodiscard]] Result pxfPsReadOpenImageProps(const ImagePropsBlock& block, ImageProps& props);

}  // namespace deimg

#endif  // DEIMG_PROPS_IMAGE_PROPS_H

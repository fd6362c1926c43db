/// The tuning block: 3,030 bytes of stage tuning recorded in every raw file.
#ifndef DEIMG_PROPS_TUNING_BLOCK_H
#define DEIMG_PROPS_TUNING_BLOCK_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "props/byte_order.h"

namespace deimg {

/// The one place that knows where each tuning value lies. Values are little-endian in every raw
/// file, whatever its byte order.
///
/// Indices: `setIndex` 0 to 3 for processing set -1, 0, 1, 3; `toneIndex` 0 to 2 for tone level
/// -1, 0, 1; `isoClass` 0 to 4.
class TuningBlock {
 public:
  static constexpr std::size_t kSize = 3030;
  template <std::size_t n>
  using Words = std::array<std::int16_t, n>;

  explicit TuningBlock(const std::uint8_t (&bytes)[kSize]) : bytes_(bytes) {}

  // Whole picture.
  std::int16_t smoothSelect() const { return Word(8); }
  std::int16_t greenChoiceEnable() const { return Word(16); }
  std::int16_t luminancePedestal() const { return Word(2980); }
  std::int16_t blackR() const { return Word(2982); }
  std::int16_t blackG() const { return Word(2984); }
  std::int16_t blackB() const { return Word(2986); }

  // Per processing set: direction and low-pass choices, 16 bytes each.
  std::uint16_t aFilterSlopeShift(int setIndex) const { return Unsigned(SetByte(22, setIndex)); }
  std::uint16_t aFilterCoreLevel(int setIndex) const { return Unsigned(SetByte(24, setIndex)); }
  std::int16_t directionThreshold(int setIndex) const { return Word(SetByte(26, setIndex)); }
  std::uint16_t detailGainLow(int setIndex) const { return Unsigned(SetByte(28, setIndex)); }
  std::uint16_t detailGainMix(int setIndex) const { return Unsigned(SetByte(30, setIndex)); }
  std::int16_t hokanLpfSelect(int setIndex) const { return Word(SetByte(32, setIndex)); }
  std::int16_t verLpfKernelSelect(int setIndex) const { return Word(SetByte(34, setIndex)); }

  // Per processing set: the aperture-correction record, 124 bytes each.
  std::int16_t hApcLayout(int setIndex) const { return RecordWord(setIndex, 2); }
  std::int16_t vApcFilter(int setIndex) const { return RecordWord(setIndex, 3); }
  std::int16_t vApcLayout(int setIndex) const { return RecordWord(setIndex, 4); }
  std::int16_t rApcHorizontalMode(int setIndex) const { return RecordWord(setIndex, 6); }
  std::int16_t rApcVerticalMode(int setIndex) const { return RecordWord(setIndex, 7); }
  std::int16_t rApcBlend(int setIndex) const { return RecordWord(setIndex, 8); }

  enum class ApcCurveId { kHNarrow, kHWide, kV, kR, kA };
  /// knee1, knee2, three slope codes, three offsets.
  Words<8> apcCurve(int setIndex, ApcCurveId id) const {
    return Load<8>(RecordByte(setIndex, 20) + 16 * static_cast<std::size_t>(id));
  }

  std::uint16_t detailRiseCode(int setIndex) const { return Unsigned(RecordByte(setIndex, 102)); }
  std::uint16_t detailFallCode(int setIndex) const { return Unsigned(RecordByte(setIndex, 104)); }
  std::uint16_t detailEndCode(int setIndex) const { return Unsigned(RecordByte(setIndex, 106)); }
  std::int16_t negativeModeA(int setIndex) const { return Word(RecordByte(setIndex, 110)); }
  std::int16_t negativeModeB(int setIndex) const { return Word(RecordByte(setIndex, 112)); }
  std::int16_t detailGainPeak(int setIndex, int isoClass) const {
    return Word(RecordByte(setIndex, 114) + 2 * Index(isoClass));
  }

  // Per tone level.
  /// Controls c0 to c31 of the luminance tone curve.
  Words<32> toneControls(int toneIndex, int isoClass) const {
    return Load<32>(580 + 320 * Index(toneIndex) + 64 * Index(isoClass));
  }
  /// Record r0 to r44 of the red, green and blue tone curve.
  Words<45> rgbToneRecord(int toneIndex, int isoClass) const {
    return Load<45>(1540 + 450 * Index(toneIndex) + 90 * Index(isoClass));
  }
  /// Parameters p0 to p6 of the luminance correction by colour difference.
  std::array<std::uint16_t, 7> chromaCorrection(int toneIndex) const {
    return AsUnsigned(Load<7>(2988 + 14 * Index(toneIndex)));
  }

  // Per sensitivity class.
  /// Curve values e0 to e8 of the chroma suppression.
  std::array<std::uint16_t, 9> chromaSuppression(int isoClass) const {
    return AsUnsigned(Load<9>(2890 + 18 * Index(isoClass)));
  }

 private:
  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  static std::size_t SetByte(std::size_t byte, int setIndex) { return byte + 16 * Index(setIndex); }
  static std::size_t RecordByte(int setIndex, std::size_t byte) {
    return 84 + 124 * Index(setIndex) + byte;
  }

  std::int16_t Word(std::size_t byte) const { return LoadS16Little(bytes_ + byte); }
  std::uint16_t Unsigned(std::size_t byte) const { return LoadU16(bytes_ + byte, false); }
  std::int16_t RecordWord(int setIndex, std::size_t word) const {
    return Word(RecordByte(setIndex, 2 * word));
  }
  template <std::size_t n>
  Words<n> Load(std::size_t byte) const {
    Words<n> words{};
    for (std::size_t i = 0; i < n; ++i) words[i] = Word(byte + 2 * i);
    return words;
  }
  template <std::size_t n>
  static std::array<std::uint16_t, n> AsUnsigned(const Words<n>& words) {
    std::array<std::uint16_t, n> values{};
    for (std::size_t i = 0; i < n; ++i) values[i] = static_cast<std::uint16_t>(words[i]);
    return values;
  }

  const std::uint8_t (&bytes_)[kSize];
};

}  // namespace deimg

#endif  // DEIMG_PROPS_TUNING_BLOCK_H

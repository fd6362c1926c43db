#include "pipeline/development_tables.h"

#include <algorithm>

#include "base/rounding.h"

namespace deimg {
namespace {

constexpr std::int16_t kLayoutNumber = 16;
constexpr std::int32_t kLargeDistance = 262144;
constexpr std::int32_t kOne = 4096;
constexpr std::int16_t kHighestColourGain = 255;

/// Reads the table stream: little-endian values without gaps.
class TableStream {
 public:
  explicit TableStream(const ImageProps& props) : words_(props.tuningTables) {}

  std::int16_t Next16() { return static_cast<std::int16_t>(words_[next_++]); }
  std::int32_t Next32() {
    const std::uint32_t low = words_[next_];
    const std::uint32_t high = words_[next_ + 1];
    next_ += 2;
    return static_cast<std::int32_t>(high << 16 | low);
  }
  void Skip16() { ++next_; }

 private:
  const std::uint16_t (&words_)[ImageProps::kTuningTableWords];
  std::size_t next_ = 1;  // the first word is not part of the stream
};

/// Division that is defined for every operand: truncating, and wrapping where it overflows.
std::int32_t Divide(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(std::int64_t{a} / b);
}

/// The group of a level of -1, 0 or 1.
template <std::size_t n>
const TuningTables::Group<n>* GroupOf(
    const std::array<TuningTables::Group<n>, TuningTables::kGroups>& groups, std::int16_t level) {
  if (level < -1 || level > 1) return nullptr;
  return &groups[static_cast<std::size_t>(level + 1)];
}

/// The neutral entry, which offsets and gains are relative to.
template <std::size_t n>
const std::array<std::int16_t, n>& Neutral(
    const std::array<TuningTables::Group<n>, TuningTables::kGroups>& groups) {
  return groups[1][1].values;
}

template <std::size_t n>
Result LookUpLevel(const std::array<TuningTables::Group<n>, TuningTables::kGroups>& groups,
                   std::int16_t level, std::int32_t t, std::array<std::int16_t, n>& values) {
  const TuningTables::Group<n>* const group = GroupOf<n>(groups, level);
  return group == nullptr ? Result{DEIMG_UNSUPPORTED} : LookUp<n>(*group, t, values);
}

Result DeriveColourOffsets(const TuningTables& tuning, const DevelopSettings& settings,
                           std::array<std::int16_t, 4>& offsets) {
  DEIMG_RETURN_IF_FAILED(LookUpLevel<4>(tuning.colourOffsets, settings.colourLevel,
                                        settings.colourTemperature, offsets));
  const auto& neutral = Neutral<4>(tuning.colourOffsets);
  offsets[2] = Signed16(offsets[2] + tuning.offsetAdjust2() - neutral[2]);
  offsets[3] = Signed16(offsets[3] + tuning.offsetAdjust3() - neutral[3]);
  return DEIMG_OK;
}

Result DeriveColourGains(const TuningTables& tuning, const DevelopSettings& settings,
                         std::array<std::int16_t, 7>& gains) {
  DEIMG_RETURN_IF_FAILED(
      LookUpLevel<7>(tuning.colourGains, settings.matrixLevel, settings.colourTemperature, gains));
  const std::int16_t neutral = Neutral<7>(tuning.colourGains)[0];
  if (neutral == 0) return DEIMG_BAD_TUNING;
  const std::int16_t scaled = Signed16(gains[0] * tuning.colourGainScale() / neutral);
  gains[0] = std::min(scaled, kHighestColourGain);
  return DEIMG_OK;
}

}  // namespace

Result TuningTables::Load(const ImageProps& props) {
  TableStream stream(props);
  for (std::int16_t& scalar : scalars) scalar = stream.Next16();
  for (auto& group : matrices) {
    for (auto& record : group) {
      record.key = stream.Next32();
      stream.Skip16();  // group tag
      auto& m = record.values;
      for (const std::size_t i : {0u, 3u, 4u, 5u, 6u, 7u, 8u, 11u}) m[i] = stream.Next16();
      m[1] = Signed16(-m[0]);
      m[2] = Signed16(-m[3]);
      m[9] = Signed16(-m[8]);
      m[10] = Signed16(-m[11]);
      stream.Skip16();
    }
  }
  for (auto& group : colourOffsets) {
    for (auto& record : group) {
      record.key = stream.Next32();
      stream.Skip16();  // group tag
      for (std::int16_t& value : record.values) value = stream.Next16();
      stream.Skip16();
    }
  }
  for (auto& group : colourGains) {
    for (auto& record : group) {
      record.key = stream.Next32();
      stream.Skip16();  // group tag
      for (std::int16_t& value : record.values) value = stream.Next16();
    }
  }
  for (auto& record : luminanceWeights) {
    record.key = stream.Next32();
    for (std::int16_t& value : record.values) value = stream.Next16();
    stream.Skip16();
  }
  return layoutNumber() == kLayoutNumber ? DEIMG_OK : DEIMG_BAD_TUNING;
}

std::int32_t Interpolate(std::int32_t a, std::int32_t b, std::int32_t dHi, std::int32_t dLo) {
  if (dHi + dLo == 0) dHi = dLo = 1;
  if (dHi > kLargeDistance) {
    dHi >>= 2;
    dLo >>= 2;
  }
  // Only keys that wrap around can bring the sum to 0 here.
  if (dHi + dLo == 0) dHi = dLo = 1;
  const std::int32_t w = Divide(dHi * kOne, dHi + dLo);
  const std::int32_t rest = kOne - w;
  return (a * w + b * rest) / kOne;
}

template <std::size_t n>
Result LookUp(const TuningTables::Group<n>& group, std::int32_t t,
              std::array<std::int16_t, n>& values) {
  constexpr std::int32_t kEnd = -1;
  const std::size_t last = group.size() - 1;
  if (t < group[0].key) {
    values = group[0].values;
    return DEIMG_OK;
  }
  for (std::size_t i = 0;; ++i) {
    const TuningRecord<n>& lower = group[i];
    if (lower.key == kEnd) return DEIMG_BAD_TUNING;
    if (i == last || group[i + 1].key == kEnd) {
      values = lower.values;
      return DEIMG_OK;
    }
    const TuningRecord<n>& upper = group[i + 1];
    if (lower.key > t || t >= upper.key) continue;
    for (std::size_t k = 0; k < n; ++k) {
      values[k] =
          Signed16(Interpolate(lower.values[k], upper.values[k], upper.key - t, t - lower.key));
    }
    return DEIMG_OK;
  }
}

template Result LookUp(const TuningTables::Group<3>&, std::int32_t, std::array<std::int16_t, 3>&);
template Result LookUp(const TuningTables::Group<12>&, std::int32_t, std::array<std::int16_t, 12>&);

Result DeriveTables(const ImageProps& props, const DevelopSettings& settings,
                    DevelopmentTables& tables) {
  TuningTables tuning;
  DEIMG_RETURN_IF_FAILED(tuning.Load(props));
  tables.chromaGainCb = tuning.chromaGainCb();
  tables.chromaGainCr = tuning.chromaGainCr();
  DEIMG_RETURN_IF_FAILED(LookUpLevel<12>(tuning.matrices, settings.matrixLevel,
                                         settings.colourTemperature, tables.colourMatrix));
  DEIMG_RETURN_IF_FAILED(DeriveColourOffsets(tuning, settings, tables.colourOffsets));
  DEIMG_RETURN_IF_FAILED(DeriveColourGains(tuning, settings, tables.colourGains));
  tables.luminanceStatus =
      LookUp<3>(tuning.luminanceWeights, settings.colourTemperature, tables.luminanceWeights);
  if (tables.luminanceStatus != DEIMG_OK) tables.luminanceWeights = {};
  return DEIMG_OK;
}

}  // namespace deimg

#include "rawfile/tuning_block.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace deimg::rawfile {
namespace {

/// A block in which exactly the words are set that nobody reads.
TuningBlock UnreadWords() {
  TuningBlock block{};
  const auto mark = [](auto& words) { std::fill(std::begin(words), std::end(words), -1); };
  mark(block.unread0);
  mark(block.unread1);
  block.unread2 = -1;
  for (FilterTuning& filter : block.filters) filter.unread = -1;
  for (DetailTuning& detail : block.details) {
    mark(detail.unread0);
    detail.unread1 = detail.unread2 = detail.unread3 = detail.gain.unread = -1;
  }
  return block;
}

}  // namespace

FilterTuning PlainFilter() {
  return {.unread = 0,
          .aFilterSlopeShift = 3,
          .aFilterCoreLevel = 8,
          .directionThreshold = 64,
          .detailGainLow = 8,
          .detailGainMix = 0,
          .hokanLpfSelect = 24,
          .verLpfKernelSelect = 28};
}

DetailTuning PlainDetail() {
  constexpr ApcCurveParams kFlat = {0, 0, {3, 3, 3}, {0, 0, 0}};
  DetailTuning detail{};
  detail.hApcLayout = 32;
  detail.vApcLayout = 6;
  detail.rApcBlend = 4;
  detail.hApcShort = detail.hApcLong = detail.vApc = detail.rApc = detail.aApc = kFlat;
  detail.gain.negativeModeB = 2;
  return detail;
}

TuningBlock PlainTuning() {
  TuningBlock block{};
  block.filters.fill(PlainFilter());
  block.details.fill(PlainDetail());
  for (auto& level : block.luminanceTone) {
    for (LuminanceToneTuning& curve : level) curve.knee = 1, curve.highlight = 1400;
  }
  for (auto& level : block.rgbTone) {
    for (RgbToneTuning& curve : level) curve.knee = 1, curve.highlight = 1400;
  }
  for (ChromaSuppression& entry : block.chromaSuppression) {
    entry.kneeGain = 128;
    entry.kneeBase = 1;
    entry.knee2Level = 1023;
  }
  block.luminancePedestal = 512;
  block.blackR = block.blackG = block.blackB = 32;
  return block;
}

void Append(const TuningBlock& block, WordWriter& words) {
  static const auto unread = std::bit_cast<TuningBlock::Words>(UnreadWords());
  const auto values = std::bit_cast<TuningBlock::Words>(block);
  for (size_t i = 0; i < values.size(); ++i) {
    if (unread[i] != 0) {
      words.Unread(1);
    } else {
      words.Put(values[i]);
    }
  }
}

}  // namespace deimg::rawfile

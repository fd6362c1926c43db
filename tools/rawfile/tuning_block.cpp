#include "rawfile/tuning_block.h"

#include <cassert>

namespace deimg::rawfile {
namespace {

void Append(const FilterTuning& filter, WordWriter& words) {
  words.Unread(1);
  words.PutAll(std::array{filter.detailSlopeShift, filter.detailCoreLevel,
                          filter.directionThreshold, filter.detailGain, filter.detailLoss,
                          filter.horizontalLpf, filter.verticalLpf});
}

void Append(const ApertureCurve& curve, WordWriter& words) {
  words.Put(curve.knee1);
  words.Put(curve.knee2);
  words.PutAll(curve.slopeCodes);
  words.PutAll(curve.offsets);
}

void Append(const DetailTuning& detail, WordWriter& words) {
  words.Unread(2);
  words.Put(detail.horizontalCheck);
  words.Put(detail.verticalFilter);
  words.Put(detail.verticalCheck);
  words.Unread(1);
  words.Put(detail.radialMode0);
  words.Put(detail.radialMode1);
  words.Put(detail.radialBlend);
  words.Unread(1);
  for (const ApertureCurve* curve : {&detail.horizontalNarrow, &detail.horizontalWide,
                                     &detail.vertical, &detail.radial, &detail.directional}) {
    Append(*curve, words);
  }
  words.Unread(1);
  words.Put(detail.gainRise);
  words.Put(detail.gainFall);
  words.Put(detail.gainEnd);
  words.Unread(1);
  words.Put(detail.negativeA);
  words.Put(detail.negativeB);
  words.PutAll(detail.gainPeaks);
}

/// The five words of a luminance segment.
void Append(const ToneSegment& s, WordWriter& words) {
  words.PutAll(std::array{s.base, s.linear, s.quadratic, s.shift, s.quarter});
}

void Append(const LuminanceCurve& curve, WordWriter& words) {
  words.Put(curve.knee);
  for (size_t i = 0; i < 5; ++i) Append(curve.segments[i], words);
  words.Put(curve.highlight);
  Append(curve.segments[5], words);
}

void Append(const RgbCurve& curve, WordWriter& words) {
  words.Put(curve.floor);
  for (size_t i = 0; i < curve.segments.size(); ++i) {
    const ToneSegment& s = curve.segments[i];
    if (i == 1) words.Put(curve.knee);
    if (i == 6) {
      words.PutAll(
          std::array{curve.highlight, s.base, s.linear, s.quadratic, s.shift, s.quarter, s.mode});
    } else {
      words.PutAll(std::array{s.base, s.linear, s.quadratic, s.mode, s.shift, s.quarter});
    }
  }
}

void Append(const ChromaSuppression& s, WordWriter& words) {
  words.PutAll(std::array{s.unread, s.darkCode, s.slope3Code, s.slope2Code, s.kneeCode, s.kneeGain,
                          s.kneeBase, s.knee2Level, s.tailSlope});
}

void Append(const ChromaCorrection& c, WordWriter& words) {
  words.PutAll(std::array{c.blueGain, c.blueShift, c.redGain, c.redShift, c.redNegative,
                          c.thresholdShift, c.unread});
}

}  // namespace

void Append(const TuningBlock& block, WordWriter& words) {
  const size_t start = words.size();
  words.Unread(4);
  words.Put(block.smoothSelect);
  words.Unread(3);
  words.Put(block.greenChoice);
  words.Unread(1);
  for (const FilterTuning& filter : block.filters) Append(filter, words);
  for (const DetailTuning& detail : block.details) Append(detail, words);
  for (const auto& level : block.luminanceCurves) {
    for (const LuminanceCurve& curve : level) Append(curve, words);
  }
  for (const auto& level : block.rgbCurves) {
    for (const RgbCurve& curve : level) Append(curve, words);
  }
  for (const ChromaSuppression& entry : block.chromaSuppression) Append(entry, words);
  words.Put(block.luminancePedestal);
  words.PutAll(block.blackOffsets);
  for (const ChromaCorrection& entry : block.chromaCorrection) Append(entry, words);
  assert(words.size() == start + kTuningBlockSize / 2);
  static_cast<void>(start);
}

}  // namespace deimg::rawfile

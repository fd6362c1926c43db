/// First stage: gains per colour site, exposure adjustment, pedestal and white clip.
///
/// Multiplies every raw sample by the gain of its colour site, adds a pedestal and clips at the
/// white level. Even lines hold red and green, odd lines green and blue.
///
/// Input: the source, one line. Output: kMosaic, the white-balanced mosaic, in the scale of the raw
/// samples; not clipped below.
#ifndef DEIMG_STAGES_COLOUR_WHITE_BALANCE_INL_H
#define DEIMG_STAGES_COLOUR_WHITE_BALANCE_INL_H

#include <algorithm>

#include "base/rounding.h"
#include "graph/stage.h"
#include "line/arithmetic.h"
#include "stages/source_stream_reader-inl.h"

namespace deimg::DEIMG_LEVEL {

template <typename T>
class WhiteBalance final : public Stage {
 public:
  enum Port { kMosaic };

  WhiteBalance(const StageContext& context, SourceStreamReader& source)
      : Stage(InfoOf(TypeId::kWhiteBalance), context.size(), {&source}, 1),
        settings_(context.settings),
        clipLevel_(ClipLevel(settings_)),
        raw_(*this, source, SourceStreamReader::kRaw),
        mosaic_(*this, kMosaic, MosaicRange()) {}

  /// 98 for an exposure adjustment out of range, 3 without memory for its table.
  [[nodiscard]] Result Prepare() override {
    const int adjust = settings_.exposureAdjust;
    if (!IsKnown(adjust)) return DEIMG_MISSING;
    if (adjust == 0) return DEIMG_OK;
    const double factor = ExposureFactor(adjust);
    exposureTable_ = BlockOf<std::uint16_t>::Zeroed(kHighestRaw + 1);
    if (!exposureTable_) return DEIMG_OUT_OF_MEMORY;
    for (int i = 0; i <= kHighestRaw; ++i) {
      exposureTable_.get()[i] = Low16(std::min(Truncated(i * factor), kHighestRaw));
    }
    return DEIMG_OK;
  }

 private:
  static constexpr int kLargestAdjustment = 20;  // tenths of a stop
  static constexpr Sample kPedestal = 128;

  static bool IsKnown(int adjust) {
    return adjust >= -kLargestAdjustment && adjust <= kLargestAdjustment;
  }

  /// White, which a darker exposure lowers.
  static Sample ClipLevel(const DevelopSettings& settings) {
    const int adjust = settings.exposureAdjust;
    if (!IsKnown(adjust) || adjust >= 0) return kHighestRaw;
    const Sample greenGain = (settings.wbGains[1] + settings.wbGains[2]) / 2;
    return std::min(Truncated(4096.0 * ExposureFactor(adjust) * greenGain / 1024.0), kHighestRaw);
  }

  Range MosaicRange() const {
    constexpr Range kRaw = {0, 65535};
    Range gained = Exactly(0);
    for (const Sample gain : settings_.wbGains) {
      gained = Either(gained, gain * kRaw / kGainOne + Exactly(kPedestal));
    }
    return Clamped(gained, kAnything.low, clipLevel_);
  }

  void ComputeLine(int o) override {
    const std::uint16_t* in = raw_[o];
    if (exposureTable_) {
      auto* const exposed = Scratch<std::uint16_t>(0);
      ExposeLine(in, exposureTable_.get(), width(), exposed);
      in = exposed;
    }
    const std::size_t site = IsOddAt(o) ? 2 : 0;
    const Sample evenGain = settings_.wbGains[site], oddGain = settings_.wbGains[site + 1];
    if (IsModerate(evenGain) && IsModerate(oddGain) && clipLevel_ >= kPedestal) {
      ModerateGainLine(in, evenGain, oddGain, clipLevel_, width(), mosaic_[o]);
    } else {
      GainLine(in, evenGain, oddGain, clipLevel_, width(), mosaic_[o]);
    }
  }

  /// Looks raw samples up; larger ones than the table holds count as its last.
  static void ExposeLine(LineOf<std::uint16_t> in, const std::uint16_t* table, int width,
                         MutableLineOf<std::uint16_t> out) {
    for (Index x = 0; x < width; ++x) out[x] = table[Min<Sample>(in[x], kHighestRaw)];
  }

  static void GainLine(LineOf<std::uint16_t> in, Sample evenGain, Sample oddGain, Sample clipLevel,
                       int width, MutableLineOf<T> out) {
    ColumnOf<Sample> column = 0;
    for (Index x = 0; x < width; ++x, ++column) {
      const Sample gain = ByParity<Sample>(column, evenGain, oddGain);
      out[x] = static_cast<T>(Min(in[x] * gain / kGainOne + kPedestal, clipLevel));
    }
  }

  /// Gains with which a sample of 14 bits or more is white, and that fit into 12 bits.
  static bool IsModerate(Sample gain) { return gain >= 256 && gain < 4096; }

  /// The same for moderate gains and a clip level above the pedestal: 14 bits of a sample times
  /// 12 bits of gain, both moved up so that the quotient is the upper half of the product.
  static void ModerateGainLine(LineOf<std::uint16_t> in, Sample evenGain, Sample oddGain,
                               Sample clipLevel, int width, MutableLineOf<T> out) {
    using Word = std::uint16_t;
    const auto even = static_cast<Word>(evenGain << 4), odd = static_cast<Word>(oddGain << 4);
    const auto white = static_cast<Word>(clipLevel - kPedestal);
    Word column = 0;
    for (Index x = 0; x < width; ++x, ++column) {
      const auto sample = static_cast<Word>(Min<Word>(in[x], 16383) << 2);
      const Word gain = ByParity<Word>(column, even, odd);
      const auto product = static_cast<Word>((std::uint32_t{sample} * gain) >> 16);
      out[x] = static_cast<T>(Min<Word>(product, white) + kPedestal);
    }
  }

  /// 2 to the power of adjust / 10, rounded to single precision: whole stops times tenths. No
  /// mathematics library and no precision that a host leaves the processor in has a say in it.
  static double ExposureFactor(int adjust) {
    constexpr float kStops[] = {0.25F, 0.5F, 1.0F, 2.0F, 4.0F};
    constexpr float kTenths[] = {1.0F,        1.07177341F, 1.14869833F, 1.23114443F, 1.31950796F,
                                 1.41421354F, 1.51571655F, 1.62450480F, 1.74110115F, 1.86606598F};
    const int fromLowest = adjust + kLargestAdjustment;
    return kStops[fromLowest / 10] * kTenths[fromLowest % 10];
  }

  const DevelopSettings& settings_;
  const Sample clipLevel_;
  const Input<std::uint16_t> raw_;
  const Output<T> mosaic_;
  BlockOf<std::uint16_t> exposureTable_;  // sample by raw sample; empty without adjustment
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_STAGES_COLOUR_WHITE_BALANCE_INL_H

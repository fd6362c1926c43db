/// First stage: gains per colour site, exposure adjustment, pedestal and white clip.
#ifndef DEIMG_STAGES_COLOUR_WHITE_BALANCE_H
#define DEIMG_STAGES_COLOUR_WHITE_BALANCE_H

#include "graph/component.h"
#include "graph/stage_context.h"
#include "storage/mem_block.h"

namespace deimg {

inline constexpr int kExposureTableSize = 4096;

/// Multiplies every raw sample by the gain of its colour site (1024 = 1.0), adds a pedestal of 128
/// and clips at the white level. Even lines hold red and green, odd lines green and blue.
///
/// Input: the source, one line. Output: port 0, the white-balanced mosaic, the scale of the raw
/// samples; not clipped below.
template <typename T>
class WhiteBalance final : public ComponentX {
 public:
  explicit WhiteBalance(const StageContext& context);

  [[nodiscard]] Result Run(int first, int last) override;

  int clipLevel() const { return clipLevel_; }
  /// Sample by raw sample; null without exposure adjustment.
  const std::uint16_t* exposureTable() const { return exposureTable_.get(); }

 private:
  const Kernels& kernels_;
  const DevelopSettings& settings_;
  Sample clipLevel_ = kExposureTableSize - 1;
  BlockOf<std::uint16_t> exposureTable_;
};

}  // namespace deimg

#endif  // DEIMG_STAGES_COLOUR_WHITE_BALANCE_H

#include "graph/last_stage_rgb.h"

#include "storage/stream_calls.h"

namespace deimg {
namespace {

/// An image area that starts at this column is delivered from one column further left.
constexpr int kShiftedLeft = 12;

}  // namespace

LastStageRgb::LastStageRgb(const StageContext& context, int sampleBytes, const SensorRecord& sensor)
    : ComponentX(InfoOf(TypeId::kLastStageRgb), 3 * context.width, context.height, sampleBytes),
      kernels_(context.kernels),
      sensor_(sensor) {}

Result LastStageRgb::Run(int first, int last) {
  ComponentX* luminance = nullptr;
  ComponentX* chroma = nullptr;
  for (ComponentX* source : {input(0), input(1)}) {
    if (source == nullptr) continue;
    if (source->typeId() == TypeId::kYMainProcs) {
      luminance = source;
    } else if (source->typeId() == TypeId::kColorSystemProc) {
      chroma = source;
    } else {
      return DEIMG_UNSUPPORTED;
    }
  }
  if (luminance == nullptr || chroma == nullptr) return DEIMG_MISSING;
  if (sampleBytes() != 1 && sampleBytes() != 2) return DEIMG_BAD_REQUEST;
  const auto rgbLine = sampleBytes() == 1 ? kernels_.rgbLine8 : kernels_.rgbLine16;
  for (int o = first; o <= last; ++o) {
    rgbLine(luminance->GetLine(o, 0), chroma->GetLine(o, 1), chroma->GetLine(o, 2), width() / 3,
            OwnLine(o, 0));
  }
  return DEIMG_OK;
}

Result LastStageRgb::Deliver(CallerStream& output) {
  const int left = sensor_.areaLeft;
  const int count = 3 * (sensor_.areaRight - left + 1);
  const auto bytes = static_cast<std::uint32_t>(count * sampleBytes());
  if (!line_) line_ = BlockOf<std::uint8_t>::Uninitialised(bytes);
  if (!line_) return DEIMG_OUT_OF_MEMORY;
  const Sample* const samples = OwnLine(0, 0) + 3 * (left == kShiftedLeft ? left - 1 : left);
  switch (sampleBytes()) {
    case 1:
      kernels_.packLine8(samples, count, line_.get());
      break;
    case 2:
      kernels_.packLine16(samples, count, line_.get());
      break;
    default:
      return DEIMG_UNSUPPORTED;
  }
  return Write(output, line_.get(), bytes);
}

}  // namespace deimg

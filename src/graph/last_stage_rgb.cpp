#include "graph/last_stage_rgb.h"

#include "props/byte_order.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

/// An image area that starts at this column is delivered from one column further left.
constexpr int kShiftedLeft = 12;

}  // namespace

LastStageRgb::LastStageRgb(const StageContext& context, int sampleBytes, const SensorRecord& sensor)
    : ComponentX(InfoOf(TypeId::kLastStageRgb), 3 * context.width, context.height, sampleBytes, 1),
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
  const int pixels = width() / 3;
  for (int o = first; o <= last; ++o) {
    const Sample* const y = luminance->GetLine(o, 0);
    const Sample* const cr = chroma->GetLine(o, 1);
    const Sample* const cb = chroma->GetLine(o, 2);
    if (sampleBytes() == 1) {
      kernels_.rgbLine8(y, cr, cb, pixels, reinterpret_cast<std::uint8_t*>(Scratch(0)),
                        reinterpret_cast<std::uint8_t*>(OwnLine(o, 0)));
    } else {
      auto* const rgb = reinterpret_cast<std::uint16_t*>(OwnLine(o, 0));
      kernels_.rgbLine16(y, cr, cb, pixels, reinterpret_cast<std::uint16_t*>(Scratch(0)), rgb);
      ToLittleEndian(rgb, static_cast<std::size_t>(width()));
    }
  }
  return DEIMG_OK;
}

Result LastStageRgb::Deliver(CallerStream& output) {
  const int left = sensor_.areaLeft;
  const int pixelBytes = 3 * sampleBytes();
  const auto bytes = static_cast<std::uint32_t>((sensor_.areaRight - left + 1) * pixelBytes);
  const auto* const line = reinterpret_cast<const std::uint8_t*>(OwnLine(0, 0));
  return Write(output, line + (left == kShiftedLeft ? left - 1 : left) * pixelBytes, bytes);
}

}  // namespace deimg

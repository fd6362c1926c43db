#include "graph/last_stage_rgb.h"

#include <algorithm>

#include "storage/stream_calls.h"

namespace deimg {
namespace {

/// An image area that starts at this column is delivered from one column further left.
constexpr int kShiftedLeft = 12;

template <Sample divisor, Sample offset, Sample highest>
void RgbLine(Line y, Line cr, Line cb, int width, MutableLine rgb) {
  for (int x = 0; x < width; ++x) {
    const Sample a = y[x] * 1024;
    const Sample r = (a + 1436 * cr[x]) / divisor + offset;
    const Sample g = (a - 352 * cb[x] - 731 * cr[x]) / divisor + offset;
    const Sample b = (a + 1814 * cb[x] - cr[x]) / divisor + offset;
    rgb[3 * x] = std::clamp(r, 0, highest);
    rgb[3 * x + 1] = std::clamp(g, 0, highest);
    rgb[3 * x + 2] = std::clamp(b, 0, highest);
  }
}

void Pack8(Line samples, int count, std::uint8_t* bytes) {
  for (int i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(samples[i]);
}

void Pack16(Line samples, int count, std::uint8_t* bytes) {
  for (int i = 0; i < count; ++i) {
    bytes[2 * i] = static_cast<std::uint8_t>(samples[i]);
    bytes[2 * i + 1] = static_cast<std::uint8_t>(samples[i] >> 8);
  }
}

}  // namespace

void RgbLine8(Line y, Line cr, Line cb, int width, MutableLine rgb) {
  RgbLine<32768, 0, 255>(y, cr, cb, width, rgb);
}

void RgbLine16(Line y, Line cr, Line cb, int width, MutableLine rgb) {
  RgbLine<128, 7, 65535>(y, cr, cb, width, rgb);
}

LastStageRgb::LastStageRgb(const StageContext& context, int sampleBytes, const SensorRecord& sensor)
    : ComponentX(InfoOf(TypeId::kLastStageRgb), 3 * context.width, context.height, sampleBytes),
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
  const auto rgbLine = sampleBytes() == 1 ? RgbLine8 : RgbLine16;
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
      Pack8(samples, count, line_.get());
      break;
    case 2:
      Pack16(samples, count, line_.get());
      break;
    default:
      return DEIMG_UNSUPPORTED;
  }
  return Write(output, line_.get(), bytes);
}

}  // namespace deimg

#include "plane_check.hpp"

#include "decode/sensor_plane_decoder.h"
#include "failure.hpp"
#include "interrupt.hpp"
#include "pipeline/levels.h"

namespace deimg::cli {
namespace {

constexpr const char* kDoing = "decoding the sensor data";
constexpr unsigned kFirstImpossible = 4096;

/// A sensor plane that is looked at and not kept.
struct PlaneCheck {
  uint64_t samples = 0;
  uint64_t impossible = 0;
  uint64_t firstImpossible = 0;

  static void Write(void* cookie, const void* buffer, uint32_t* count, uint32_t* error) {
    auto& self = *static_cast<PlaneCheck*>(cookie);
    const auto* const bytes = static_cast<const uint8_t*>(buffer);
    for (uint32_t i = 0; i + 1 < *count; i += 2, ++self.samples) {
      const unsigned sample = bytes[i] | unsigned{bytes[i + 1]} << 8;
      if (sample < kFirstImpossible) continue;
      if (self.impossible++ == 0) self.firstImpossible = self.samples;
    }
    *error = CancelFlag() ? host::kCancelled : 0;
  }
  CallerStream Stream() {
    CallerStream stream{};
    stream.cookie = this;
    stream.progressMode = DEIMG_PROGRESS_NEVER;
    stream.Open = [](void*, uint16_t, uint32_t* error) { *error = 0; };
    stream.Close = [](void*, uint32_t* error) { *error = 0; };
    stream.Write = Write;
    stream.Seek = [](void*, uint16_t, int32_t, uint32_t* error) { *error = 0; };
    return stream;
  }
};

}  // namespace

void RequirePlausibleSamples(host::Input& raw, const RawInfo& info) {
  PlaneCheck check;
  CallerStream plane = check.Stream();
  const Result code = SensorPlaneDecoder(ChosenLevel().planeLines(), *raw.stream(), info.geometry,
                                         info.props, {plane});
  if (code != DEIMG_OK) throw Failure(kDoing, host::CodeText(code), code);
  if (check.impossible == 0) return;
  throw Failure(kDoing,
                std::to_string(check.impossible) +
                    " samples are beyond the sensor's range, the first at column " +
                    std::to_string(check.firstImpossible % info.geometry.sensorWidth) + ", line " +
                    std::to_string(check.firstImpossible / info.geometry.sensorWidth) +
                    " of the sensor: the coded data are damaged",
                DEIMG_BAD_DATA);
}

}  // namespace deimg::cli

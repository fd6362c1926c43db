/// The documented bounds on the memory of a job.
#ifndef DEIMG_TESTS_SUPPORT_MEMORY_BOUNDS_H
#define DEIMG_TESTS_SUPPORT_MEMORY_BOUNDS_H

#include <algorithm>

#include "props/image_props.h"
#include "support/streams.h"

namespace deimg::testing {

/// The plane that a file declares; none when it cannot be read.
inline SensorRecord Declared(const std::vector<std::uint8_t>& file) {
  InputStream input(file);
  ImagePropsBlock block;
  ImageProps props{};
  const bool read = ReadImagePropsBlock(*input.get(), block) == DEIMG_OK &&
                    pxfPsReadOpenImageProps(block, props) == DEIMG_OK;
  return read ? props.sensor : SensorRecord{};
}

/// In bytes, by the phases of the job whose file this is.
struct MemoryBounds {
  explicit MemoryBounds(const std::vector<std::uint8_t>& file) {
    const SensorRecord sensor = Declared(file);
    plane = std::size_t{2} * sensor.width * sensor.height;
    properties = file.size() + (64u << 10);
    lowBits = plane / 8 + (96u << 10);
    reduction = plane / 9 + 512u * std::size_t{sensor.width};
    graph = 1024u * std::size_t{sensor.width} + (512u << 10);
    picture = plane / 24 + 57600;
  }
  std::size_t plane, properties, lowBits, reduction, graph, picture;
  static constexpr std::size_t kProbe = (std::size_t{2} << 20) + (64u << 10);

  std::size_t largest() const {
    return plane + std::max({properties, lowBits, kProbe, reduction, plane / 9 + graph + picture});
  }
};

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_MEMORY_BOUNDS_H

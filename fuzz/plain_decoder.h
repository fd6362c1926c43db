/// The decoding of the sensor data, stated as plainly as possible.
#ifndef DEIMG_FUZZ_PLAIN_DECODER_H
#define DEIMG_FUZZ_PLAIN_DECODER_H

#include <cstdint>
#include <vector>

namespace deimg::fuzz {

/// Decodes `samples` samples whose low-bit bytes all have one value; false where the data do not
/// fit the code or end too early.
bool PlainDecode(const std::vector<std::uint8_t>& coded, std::uint8_t lowBits,
                 std::uint32_t codeSet, std::uint32_t width, std::uint32_t samples,
                 std::vector<std::uint16_t>& plane);

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_PLAIN_DECODER_H

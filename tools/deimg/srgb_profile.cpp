#include "srgb_profile.hpp"

#include <lcms2.h>

#include <algorithm>
#include <memory>
#include <new>

namespace deimg::cli {
namespace {

// The header's creation date: six big-endian 16-bit numbers, year to second.
constexpr size_t kDateOffset = 24;
constexpr unsigned char kDate[] = {0x07, 0xCF, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};  // 1999-01-01

}  // namespace

std::vector<unsigned char> SrgbProfile() {
  const std::unique_ptr<void, decltype(&cmsCloseProfile)> profile(cmsCreate_sRGBProfile(),
                                                                  &cmsCloseProfile);
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) throw std::bad_alloc();
  std::vector<unsigned char> bytes(size);
  if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) throw std::bad_alloc();
  // The library records the time of this run; a picture must not depend on when it was made.
  std::copy(std::begin(kDate), std::end(kDate), bytes.begin() + kDateOffset);
  return bytes;
}

}  // namespace deimg::cli

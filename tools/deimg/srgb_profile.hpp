/// The ICC profile of the developed pictures.
#ifndef DEIMG_TOOLS_DEIMG_SRGB_PROFILE_HPP
#define DEIMG_TOOLS_DEIMG_SRGB_PROFILE_HPP

#include <vector>

namespace deimg::cli {

/// An sRGB display profile; the same bytes in every run.
std::vector<unsigned char> SrgbProfile();

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_SRGB_PROFILE_HPP

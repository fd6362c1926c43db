/// A look at decoded sensor data for values that no sensor gives.
#ifndef DEIMG_TOOLS_DEIMG_PLANE_CHECK_HPP
#define DEIMG_TOOLS_DEIMG_PLANE_CHECK_HPP

#include <deimg/streams.hpp>

#include "raw_info.hpp"

namespace deimg::cli {

/// Decodes the sensor data and throws Failure when that fails, or when samples have more than the
/// sensor's 12 bits: damage that happens to fit the code often shows that way, because every sample
/// is coded as a difference from an earlier one.
void RequirePlausibleSamples(host::Input& raw, const RawInfo& info);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_PLANE_CHECK_HPP

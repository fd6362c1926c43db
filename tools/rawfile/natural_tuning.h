/// A well-behaved camera: what developed pictures look like when every value is set with care.
#ifndef DEIMG_RAWFILE_NATURAL_TUNING_H
#define DEIMG_RAWFILE_NATURAL_TUNING_H

#include "rawfile/property_set.h"

namespace deimg::rawfile {

/// Linear level of a white-balanced sample, black removed, that develops to white.
constexpr int kWhiteLevel = 3800;

/// Share of the difference from grey that is left in the sensor's colours.
constexpr double kSensorSaturation = 0.85;

/// Properties of a camera whose sensor sees the colours of the output space, only paler, up to
/// white balance and black level: grey stays neutral, the tone curve is that of sRGB, sharpening
/// makes up for what demosaicking loses. Levels -1 and 1 are softer and harder, paler and stronger.
/// The sensor record is left empty.
PropertySet NaturalProperties();

}  // namespace deimg::rawfile

#endif  // DEIMG_RAWFILE_NATURAL_TUNING_H

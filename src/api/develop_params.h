/// The host's settings block on entry.
#ifndef DEIMG_API_DEVELOP_PARAMS_H
#define DEIMG_API_DEVELOP_PARAMS_H

#include "api/result.h"

namespace deimg {

/// Writes the defaults into a block that the host did not fill, and clears gains that are not valid
/// or not wanted by the white-balance preset.
void SettleParams(DevelopParams& params);

}  // namespace deimg

#endif  // DEIMG_API_DEVELOP_PARAMS_H

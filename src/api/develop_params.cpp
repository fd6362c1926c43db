#include "api/develop_params.h"

#include <cstring>

namespace deimg {

void SettleParams(DevelopParams& params) {
  if (params.filled != 1) {
    std::memset(&params, 0, offsetof(DevelopParams, matrixSelect));
    params.wbPreset = DEIMG_AS_RECORDED;
    params.toneLevel = DEIMG_AS_RECORDED;
    params.matrixLevel = DEIMG_AS_RECORDED;
    params.processingSet = DEIMG_AS_RECORDED;
    params.colourLevel = DEIMG_AS_RECORDED;
    params.matrixSelect = 0;
    params.exposureAdjust = 0;
  }
  if (params.whiteBalance.wbGainsSet != 1) params.whiteBalance = {};
  if (params.wbPreset != DEIMG_WB_POINT && params.wbPreset != DEIMG_WB_GAINS) {
    params.whiteBalance.wbGainsSet = 0;
  }
}

}  // namespace deimg

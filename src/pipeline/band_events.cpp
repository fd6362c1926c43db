#include "pipeline/band_events.h"

namespace deimg {

bool TellBandEvent(BandMoment /*moment*/, int /*number*/) { return true; }

}  // namespace deimg

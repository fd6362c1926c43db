#include "support/band_events.h"

#include <utility>

namespace deimg {
namespace {

// Set and taken away while no job runs.
testing::BandEventScope::Function listener;

}  // namespace

bool TellBandEvent(BandMoment moment, int number) { return !listener || listener(moment, number); }

namespace testing {

BandEventScope::BandEventScope(Function function) { listener = std::move(function); }
BandEventScope::~BandEventScope() { listener = nullptr; }

}  // namespace testing
}  // namespace deimg

/// A test's part in the threads of a job.
#ifndef DEIMG_TESTS_SUPPORT_BAND_EVENTS_H
#define DEIMG_TESTS_SUPPORT_BAND_EVENTS_H

#include <functional>

#include "pipeline/band_events.h"

namespace deimg::testing {

/// While an object of this class lives, jobs of every thread tell it their moments. One at a time.
class BandEventScope {
 public:
  using Function = std::function<bool(BandMoment moment, int number)>;

  explicit BandEventScope(Function function);
  ~BandEventScope();
  BandEventScope(const BandEventScope&) = delete;
  BandEventScope& operator=(const BandEventScope&) = delete;
};

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_BAND_EVENTS_H

/// Moments in the life of the threads of a job in which a test may take part. In the library they
/// are nothing: band_events.cpp stands apart so that tests can put another in its place.
#ifndef DEIMG_PIPELINE_BAND_EVENTS_H
#define DEIMG_PIPELINE_BAND_EVENTS_H

namespace deimg {

enum class BandMoment {
  kThreadStarts,  // on the job's thread, right before; false: as if the system had no more
  kThreadBegins,  // on the new thread, first of all
  kBandComputed,  // on any thread, before others hear of it
  kThreadEnds,    // last of all, when everything that the thread made is given back
};

/// `number` is the thread's, 1 for the first helper, or the band's.
bool TellBandEvent(BandMoment moment, int number);

}  // namespace deimg

#endif  // DEIMG_PIPELINE_BAND_EVENTS_H

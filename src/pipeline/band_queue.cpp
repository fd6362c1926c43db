#include "pipeline/band_queue.h"

#include <algorithm>

namespace deimg {

using platform::MonitorLock;

void BandQueue::SetUp(int bands, int window) {
  const MonitorLock lock(monitor_);
  bands_ = bands;
  window_ = std::clamp(window, 1, kMostSlots);
}

void BandQueue::SetReady(int bands) {
  const MonitorLock lock(monitor_);
  ready_ = bands;
  monitor_.WakeAll();
}

int BandQueue::Take() {
  const MonitorLock lock(monitor_);
  while (!stopped_) {
    const int band = TakeTopmost();
    if (band != kNone) return band;
    if (top_ + window_ >= bands_ && ready_ == bands_) break;  // somebody has every band
    monitor_.Wait();
  }
  return kNone;
}

BandQueue::Turn BandQueue::Next(int band, int& another) {
  const MonitorLock lock(monitor_);
  while (!stopped_) {
    State& state = StateOf(band);
    if (state == State::kFinished) return Turn::kDeliver;
    if (state == State::kFree) {
      state = State::kTaken;
      return Turn::kDevelopItself;
    }
    another = TakeTopmost();
    if (another != kNone) return Turn::kDevelopAnother;
    monitor_.Wait();
  }
  return Turn::kDevelopItself;
}

void BandQueue::Delivered(int band) {
  const MonitorLock lock(monitor_);
  StateOf(band) = State::kFree;
  top_ = band + 1;
  monitor_.WakeAll();
}

void BandQueue::Stop() {
  const MonitorLock lock(monitor_);
  stopped_ = true;
  monitor_.WakeAll();
}

void BandQueue::Set(int band, State state) {
  const MonitorLock lock(monitor_);
  StateOf(band) = state;
  monitor_.WakeAll();
}

int BandQueue::TakeTopmost() {
  const int end = std::min({ready_, top_ + window_, bands_});
  for (int band = top_; band < end; ++band) {
    if (StateOf(band) != State::kFree) continue;
    StateOf(band) = State::kTaken;
    return band;
  }
  return kNone;
}

}  // namespace deimg

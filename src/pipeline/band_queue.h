/// Who develops which band of a picture.
#ifndef DEIMG_PIPELINE_BAND_QUEUE_H
#define DEIMG_PIPELINE_BAND_QUEUE_H

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/thread.h"

namespace deimg {

/// Bands of a picture, taken from top to bottom by several threads and delivered in order by one of
/// them, the job's own. A finished band waits in a slot; there are `window` slots, so that no band
/// is taken that lies further than this below the one to be delivered. Every function locks.
class BandQueue {
 public:
  static constexpr int kMostSlots = 1024;
  static constexpr int kNone = -1;

  BandQueue() = default;

  /// Before any thread takes a band: how many there are, and how many slots.
  void SetUp(int bands, int window);

  /// The bands above this one may be taken: their lines of the plane are there.
  void SetReady(int bands);

  /// For a helping thread: takes the topmost band that nobody has, waiting for one to become ready
  /// or for a slot; kNone when there is none left or the job is over.
  [[nodiscard]] int Take();

  /// A band that was taken is finished and lies in its slot, or goes back untouched.
  void Finish(int band) { Set(band, State::kFinished); }
  void GiveBack(int band) { Set(band, State::kFree); }

  /// For the job's thread, which wants to deliver `band`: what it has to do now. A band that it is
  /// told to develop is taken.
  enum class Turn { kDeliver, kDevelopItself, kDevelopAnother };
  [[nodiscard]] Turn Next(int band, int& another);

  /// The job's thread delivered a band, whose slot is free now, and wants the following one.
  void Delivered(int band);

  /// The job is over, or its thread goes on alone: nothing is taken any more.
  void Stop();
  [[nodiscard]] bool stopped() const { return stopped_.load(std::memory_order_relaxed); }

  /// Where a finished band waits.
  [[nodiscard]] int SlotOf(int band) const { return band % window_; }

 private:
  enum class State : std::uint8_t { kFree, kTaken, kFinished };

  void Set(int band, State state);
  State& StateOf(int band) { return states_[static_cast<std::size_t>(SlotOf(band))]; }
  [[nodiscard]] int TakeTopmost();

  platform::Monitor monitor_;
  std::atomic<bool> stopped_{false};
  int bands_ = 0;
  int window_ = 1;
  int ready_ = 0;
  int top_ = 0;  // the band to be delivered
  std::array<State, kMostSlots> states_{};
};

}  // namespace deimg

#endif  // DEIMG_PIPELINE_BAND_QUEUE_H

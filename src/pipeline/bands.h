/// One picture on several cores: helping threads develop bands of output lines while the job's own
/// thread decodes, and go on while it delivers.
#ifndef DEIMG_PIPELINE_BANDS_H
#define DEIMG_PIPELINE_BANDS_H

#include <array>
#include <cstdint>

#include "pipeline/band_queue.h"
#include "pipeline/development.h"
#include "pipeline/levels.h"
#include "platform/thread.h"
#include "props/image_geometry.h"
#include "storage/mem_block.h"
#include "storage/memory_stream.h"

namespace deimg {

/// On how many threads a job may run, and how its picture is shared between them.
struct ThreadPlan {
  static constexpr int kMost = 64;

  int threads = 1;            // the calling one among them
  int bandLines = 64;         // 2 or more
  int leastPixels = 1 << 20;  // a smaller picture is not worth a thread
};

/// Each thread has a graph of its own, on a cursor of its own over the plane in memory; graphs
/// start anew at every band. No call of the host's is made from here: the job's thread takes
/// finished lines, in order, and develops bands itself when the one that it wants is not finished.
///
/// Helping is an offer. Whatever is wrong with the settings, and whatever memory or thread cannot
/// be had, ends a helper's part only: the job's thread comes upon it in its own order, or does the
/// work. The helpers end when all bands are taken, at the latest when this object goes.
class Bands {
 public:
  explicit Bands(const ThreadPlan& plan) : plan_(plan) {}
  Bands(const Bands&) = delete;
  Bands& operator=(const Bands&) = delete;
  ~Bands();

  /// Makes ready to help with a picture, once. Nothing is started yet, and nothing will be where
  /// threads cannot help: when there is to be one only, or the settings are not in order.
  /// The level, the plane and the geometry outlive this object; `params` is left as it is.
  void Offer(const Level& level, const MemoryStream& plane, const ImageGeometry& geometry,
             const DevelopParams& params, const ImageProps& props, int sampleBytes);

  /// Whether a picture was offered, with threads or without.
  [[nodiscard]] bool isOffered() const { return level_ != nullptr; }

  /// The plane's lines above this one are there and stay as they are.
  void LinesReady(int lines);

  /// Whether the bands are those of a development with these settings.
  [[nodiscard]] bool AreMadeWith(const DevelopSettings& settings) const {
    return started_ > 0 && settings == development_.settings;
  }

  /// A line's bytes if it is finished, or null when the caller has to compute it with its graph.
  /// Lines are asked for in ascending order, from the picture's second one to its last.
  [[nodiscard]] const std::uint8_t* Take(int line, ProcessingGraph& graph);
  [[nodiscard]] std::uint32_t lineBytes() const { return lineBytes_; }

  /// How far down the plane is read for the band of a line.
  [[nodiscard]] int PlaneEndOf(int line) const { return PlaneEnd(BandOf(line)); }

 private:
  struct Helper {
    Bands* bands;
    int number;
    platform::Thread thread;
  };
  /// How many finished bands wait for each helper: a thousand lines, more than it develops while a
  /// picture of usual size is decoded.
  static constexpr int kSlotsPerHelper = 16;

  [[nodiscard]] int BandOf(int line) const { return (line - geometry_->areaTop) / plan_.bandLines; }
  [[nodiscard]] int FirstLine(int band) const {
    return geometry_->areaTop + band * plan_.bandLines;
  }
  [[nodiscard]] int EndLine(int band) const;
  [[nodiscard]] int PlaneEnd(int band) const;
  [[nodiscard]] std::uint8_t* SlotOf(int band) const;

  void StartHelpers();
  void Help(int number);
  [[nodiscard]] Result Develop(int band, ProcessingGraph& graph);

  const ThreadPlan plan_;
  bool offered_ = false;
  const Level* level_ = nullptr;
  const MemoryStream* plane_ = nullptr;
  const ImageGeometry* geometry_ = nullptr;
  int sampleBytes_ = 0;
  Development development_;

  int bandCount_ = 0;
  int ready_ = 0;        // bands whose lines are there
  int current_ = 0;      // the band that lines are taken from
  bool inSlot_ = false;  // which is finished, and not computed by the job's thread as it goes
  std::uint32_t lineBytes_ = 0;
  int started_ = 0;
  BandQueue queue_;
  BlockOf<std::uint8_t> slots_;
  std::array<Helper, ThreadPlan::kMost - 1> helpers_{};
};

}  // namespace deimg

#endif  // DEIMG_PIPELINE_BANDS_H

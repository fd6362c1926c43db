#include "pipeline/bands.h"

#include <algorithm>
#include <cstring>

#include "pipeline/band_events.h"

namespace deimg {
namespace {

/// The output of a helping graph: lines one behind the other.
struct LineCollector {
  std::uint8_t* next;

  CallerStream Stream() {
    CallerStream stream{};
    stream.cookie = this;
    stream.Write = [](void* cookie, const void* line, std::uint32_t* count, std::uint32_t* error) {
      std::uint8_t*& to = static_cast<LineCollector*>(cookie)->next;
      std::memcpy(to, line, *count);
      to += *count;
      *error = DEIMG_OK;
    };
    return stream;
  }
};

}  // namespace

Bands::~Bands() {
  if (started_ == 0) return;
  queue_.Stop();
  for (int i = 0; i < started_; ++i) helpers_[static_cast<std::size_t>(i)].thread.Join();
}

void Bands::Offer(const Level& level, const MemoryStream& plane, const ImageGeometry& geometry,
                  const DevelopParams& params, const ImageProps& props, int sampleBytes) {
  level_ = &level;
  plane_ = &plane;
  geometry_ = &geometry;
  sampleBytes_ = sampleBytes;
  lineBytes_ = 3u * static_cast<std::uint32_t>(sampleBytes) * geometry.areaWidth;
  const std::int64_t pixels = std::int64_t{geometry.areaWidth} * geometry.areaHeight;
  if (pixels < plan_.leastPixels) return;
  bandCount_ = (geometry.areaHeight + plan_.bandLines - 1) / plan_.bandLines;
  DevelopParams ownParams = params;
  offered_ = bandCount_ > 1 && development_.Derive(ownParams, props) == DEIMG_OK &&
             development_.tables.luminanceStatus == DEIMG_OK;
}

void Bands::LinesReady(int lines) {
  if (!offered_) return;
  const int before = ready_;
  while (ready_ < bandCount_ && PlaneEnd(ready_) <= lines) ++ready_;
  if (ready_ == before) return;
  if (before == 0) StartHelpers();
  if (started_ > 0) queue_.SetReady(ready_);
}

void Bands::StartHelpers() {
  const int wanted = std::min(plan_.threads, bandCount_) - 1;
  const int window = std::min({wanted * kSlotsPerHelper, bandCount_, BandQueue::kMostSlots});
  slots_ = BlockOf<std::uint8_t>::Uninitialised(static_cast<std::uint64_t>(window) *
                                                static_cast<std::uint64_t>(plan_.bandLines) *
                                                lineBytes_);
  if (!slots_) return;
  queue_.SetUp(bandCount_, window);
  const auto run = [](void* argument) {
    auto& helper = *static_cast<Helper*>(argument);
    helper.bands->Help(helper.number);
  };
  while (started_ < wanted) {
    Helper& helper = helpers_[static_cast<std::size_t>(started_)];
    helper.bands = this;
    helper.number = started_ + 1;
    if (!TellBandEvent(BandMoment::kThreadStarts, helper.number) ||
        !helper.thread.Start(run, &helper)) {
      break;
    }
    ++started_;
  }
}

/// A helper's life. What it makes is gone when it ends.
void Bands::Help(int number) {
  (void)TellBandEvent(BandMoment::kThreadBegins, number);
  {
    const MemoryStream cursor = MemoryStream::Beside(*plane_);
    const GraphOwner graph =
        cursor ? level_->MakeGraph({*cursor.get(), plane_->samples()},
                                   development_.ContextOf(*geometry_), sampleBytes_)
               : nullptr;
    bool fit = graph && graph->LinesAreIndependent();
    while (fit) {
      const int band = queue_.Take();
      if (band == BandQueue::kNone) break;
      fit = Develop(band, *graph) == DEIMG_OK;
      if (!fit) queue_.GiveBack(band);
    }
  }
  (void)TellBandEvent(BandMoment::kThreadEnds, number);
}

/// Develops a band into its slot; one that is given up when the job is over counts as finished.
Result Bands::Develop(int band, ProcessingGraph& graph) {
  LineCollector lines{SlotOf(band)};
  CallerStream output = lines.Stream();
  for (int line = FirstLine(band); line < EndLine(band) && !queue_.stopped(); ++line) {
    DEIMG_RETURN_IF_FAILED(graph.DeliverLine(line, PlaneEnd(band), output));
  }
  (void)TellBandEvent(BandMoment::kBandComputed, band);
  queue_.Finish(band);
  return DEIMG_OK;
}

const std::uint8_t* Bands::Take(int line, ProcessingGraph& graph) {
  const int band = BandOf(line);
  // The picture's first line is there already: its band is entered at the second.
  const bool enters = line == FirstLine(band) || line == geometry_->areaTop + 1;
  if (enters) {
    if (band != current_) queue_.Delivered(current_);
    current_ = band;
    int another = BandQueue::kNone;
    BandQueue::Turn turn{};
    while ((turn = queue_.Next(band, another)) == BandQueue::Turn::kDevelopAnother) {
      // With the plane in memory no line can fail. If one did, it would in its turn too.
      if (Develop(another, graph) != DEIMG_OK) queue_.Stop();
    }
    inSlot_ = turn == BandQueue::Turn::kDeliver;
  }
  return inSlot_ ? SlotOf(band) + static_cast<std::size_t>(line - FirstLine(band)) * lineBytes_
                 : nullptr;
}

int Bands::EndLine(int band) const {
  return std::min(FirstLine(band + 1), geometry_->areaTop + geometry_->areaHeight);
}

int Bands::PlaneEnd(int band) const {
  return std::min<int>(EndLine(band) + ProcessingGraph::kReach, geometry_->sensorHeight);
}

std::uint8_t* Bands::SlotOf(int band) const {
  return slots_.get() + static_cast<std::size_t>(queue_.SlotOf(band)) *
                            static_cast<std::size_t>(plan_.bandLines) * lineBytes_;
}

}  // namespace deimg

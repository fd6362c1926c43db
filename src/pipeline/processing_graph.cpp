#include "pipeline/processing_graph.h"

#include <algorithm>

#include "pipeline/bands.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr int kLeastBetweenReports = 12;  // percent

ComponentX* FindIn(ComponentX& component, TypeId typeId) {
  if (component.typeId() == typeId) return &component;
  for (ComponentX* input : component.inputs()) {
    if (ComponentX* const found = FindIn(*input, typeId)) return found;
  }
  return nullptr;
}

bool RangesFitBelow(const ComponentX& component) {
  const auto inputs = component.inputs();
  return component.rangesFit() &&
         std::all_of(inputs.begin(), inputs.end(),
                     [](const ComponentX* input) { return RangesFitBelow(*input); });
}

bool AnyNeedsLineBefore(const ComponentX& component) {
  if (component.NeedsLineBefore()) return true;
  for (const ComponentX* input : component.inputs()) {
    if (AnyNeedsLineBefore(*input)) return true;
  }
  return false;
}

}  // namespace

bool ProcessingGraph::RangesFit() { return RangesFitBelow(last()); }

ComponentX* ProcessingGraph::Find(TypeId typeId) { return FindIn(last(), typeId); }

bool ProcessingGraph::LinesAreIndependent() { return !AnyNeedsLineBefore(last()); }

Result ProcessingGraph::DeliverLine(int line, int planeEnd, CallerStream& output) {
  ComponentX& lastStage = last();
  ReadBefore(planeEnd);
  const int before = lastStage.currentLine();
  const bool isNext = before != ComponentX::kNotStarted && line == before + 1;
  DEIMG_RETURN_IF_FAILED(isNext ? lastStage.Advance(line) : lastStage.Start(line));
  return Deliver(output);
}

Result ProcessingGraph::Run(CallerStream& output, Result status, Bands* bands) {
  const int firstLine = geometry_.areaTop;
  const int lastLine = firstLine + geometry_.areaHeight - 1;
  // The host may change its mind about reports at any call.
  const auto report = [&](int percent) {
    if (output.Progress != nullptr) {
      output.Progress(output.cookie, static_cast<std::uint16_t>(percent), &status);
    }
    return status;
  };

  const auto planeEnd = [&](int line) {
    return bands != nullptr ? bands->PlaneEndOf(line) : geometry_.sensorHeight;
  };

  output.Open(output.cookie, DEIMG_OPEN_TRUNCATE, &status);
  if (status != DEIMG_OK) return status;
  // This thread's own graph computes the first line always: it says what is wrong with the
  // settings.
  DEIMG_RETURN_IF_FAILED(DeliverLine(firstLine, planeEnd(firstLine), output));
  int lastReported = 0;
  for (int line = firstLine + 1; line <= lastLine; ++line) {
    const int percent = line * 100 / lastLine;
    if (output.progressMode == DEIMG_PROGRESS_ALL && output.Progress != nullptr &&
        percent >= lastReported + kLeastBetweenReports) {
      DEIMG_RETURN_IF_FAILED(report(percent));
      lastReported = percent;
    }
    const std::uint8_t* const finished = bands != nullptr ? bands->Take(line, *this) : nullptr;
    DEIMG_RETURN_IF_FAILED(finished != nullptr ? Write(output, finished, bands->lineBytes())
                                               : DeliverLine(line, planeEnd(line), output));
  }
  if (output.progressMode != DEIMG_PROGRESS_NEVER) DEIMG_RETURN_IF_FAILED(report(100));
  output.Close(output.cookie, &status);
  return status;
}

}  // namespace deimg

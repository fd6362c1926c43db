#include "pipeline/processing_graph.h"

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

}  // namespace

ComponentX* ProcessingGraph::Find(TypeId typeId) { return FindIn(last(), typeId); }

Result ProcessingGraph::Run(CallerStream& output, Result status) {
  ComponentX& lastStage = last();
  const int firstLine = geometry_.areaTop;
  const int lastLine = firstLine + geometry_.areaHeight - 1;
  // The host may change its mind about reports at any call.
  const auto report = [&](int percent) {
    if (output.Progress != nullptr) {
      output.Progress(output.cookie, static_cast<std::uint16_t>(percent), &status);
    }
    return status;
  };

  output.Open(output.cookie, DEIMG_OPEN_TRUNCATE, &status);
  if (status != DEIMG_OK) return status;
  DEIMG_RETURN_IF_FAILED(lastStage.Start(firstLine));
  DEIMG_RETURN_IF_FAILED(Deliver(output));
  int lastReported = 0;
  for (int line = firstLine + 1; line <= lastLine; ++line) {
    const int percent = line * 100 / lastLine;
    if (output.progressMode == DEIMG_PROGRESS_ALL && output.Progress != nullptr &&
        percent >= lastReported + kLeastBetweenReports) {
      DEIMG_RETURN_IF_FAILED(report(percent));
      lastReported = percent;
    }
    DEIMG_RETURN_IF_FAILED(lastStage.Advance(line));
    DEIMG_RETURN_IF_FAILED(Deliver(output));
  }
  if (output.progressMode != DEIMG_PROGRESS_NEVER) DEIMG_RETURN_IF_FAILED(report(100));
  output.Close(output.cookie, &status);
  return status;
}

}  // namespace deimg

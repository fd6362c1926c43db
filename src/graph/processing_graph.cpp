#include "graph/processing_graph.h"

namespace deimg {
namespace {

constexpr int kLeastBetweenReports = 12;  // percent

}  // namespace

template <typename T>
ProcessingGraph<T>::ProcessingGraph(CallerStream& plane, const StageContext& context,
                                    int outputSampleBytes, const SensorRecord& sensor)
    : sensor_(sensor),
      source_(plane, context),
      whiteBalance_(context),
      hokanVH_(context),
      vhDiff_(context),
      hokanCircuit_(context),
      medianCrCb_(context),
      matrix_(context),
      chromaSuppress_(context),
      colorSystem_(context),
      verLpf_(context),
      horLpf_(context, 3),
      hokanLpf_(context),
      aFilter_(context),
      ramen_(context),
      yMain_(context),
      hApc_(context),
      rApc_(context),
      vApc_(context),
      aApc_(context),
      lastStage_(context, outputSampleBytes, sensor) {
  constexpr Sample kTaps[] = {1, 2, 1};
  horLpf_.SetTaps(kTaps, 1);
  for (const Connection& connection : kConnections) {
    // The table never gives a component more inputs than it can hold.
    (void)Find(connection.consumer)->Connect(*Find(connection.input));
  }
}

template <typename T>
ComponentX* ProcessingGraph<T>::Find(TypeId typeId) {
  ComponentX* const components[] = {
      &source_,         &whiteBalance_, &hokanVH_, &vhDiff_, &hokanCircuit_, &medianCrCb_, &matrix_,
      &chromaSuppress_, &colorSystem_,  &verLpf_,  &horLpf_, &hokanLpf_,     &aFilter_,    &ramen_,
      &yMain_,          &hApc_,         &rApc_,    &vApc_,   &aApc_,         &lastStage_,
  };
  for (ComponentX* component : components) {
    if (component->typeId() == typeId) return component;
  }
  return nullptr;
}

template <typename T>
Result ProcessingGraph<T>::Run(CallerStream& output, Result status) {
  const int firstLine = sensor_.areaTop;
  const int lastLine = sensor_.areaBottom;
  const bool reports = output.Progress != nullptr;
  const auto report = [&](int percent) {
    output.Progress(output.cookie, static_cast<std::uint16_t>(percent), &status);
    return status;
  };

  output.Open(output.cookie, DEIMG_OPEN_TRUNCATE, &status);
  if (status != DEIMG_OK) return status;
  DEIMG_RETURN_IF_FAILED(lastStage_.Start(firstLine));
  DEIMG_RETURN_IF_FAILED(lastStage_.Deliver(output));
  int lastReported = 0;
  for (int line = firstLine + 1; line <= lastLine; ++line) {
    const int percent = line * 100 / lastLine;
    if (reports && output.progressMode == DEIMG_PROGRESS_ALL &&
        percent >= lastReported + kLeastBetweenReports) {
      DEIMG_RETURN_IF_FAILED(report(percent));
      lastReported = percent;
    }
    DEIMG_RETURN_IF_FAILED(lastStage_.Advance(line));
    DEIMG_RETURN_IF_FAILED(lastStage_.Deliver(output));
  }
  if (reports && output.progressMode != DEIMG_PROGRESS_NEVER) DEIMG_RETURN_IF_FAILED(report(100));
  output.Close(output.cookie, &status);
  return status;
}

template class ProcessingGraph<NarrowSample>;
template class ProcessingGraph<Sample>;

}  // namespace deimg

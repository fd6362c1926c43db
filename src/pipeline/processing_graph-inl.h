/// The wiring of the twenty components: a component's inputs are the arguments it is made with.
#ifndef DEIMG_PIPELINE_PROCESSING_GRAPH_INL_H
#define DEIMG_PIPELINE_PROCESSING_GRAPH_INL_H

#include "pipeline/processing_graph.h"
#include "stages/last_stage_rgb-inl.h"

namespace deimg::DEIMG_LEVEL {

/// T is the type of samples that may be narrow, see line.h. Components are made after those they
/// read and destroyed in the reverse order.
template <typename T>
class Graph final : public ProcessingGraph {
 public:
  Graph(const SensorPlane& plane, const StageContext& context, int outputSampleBytes)
      : ProcessingGraph(context.geometry),
        context_(context),
        source_(context_, plane),
        whiteBalance_(context_, source_),
        vhDiff_(context_, whiteBalance_),
        hokanVH_(context_, whiteBalance_, vhDiff_),
        hokanCircuit_(context_, vhDiff_, whiteBalance_),
        medianCrCb_(context_, hokanCircuit_),
        matrix_(context_, hokanVH_, medianCrCb_),
        verLpf_(context_, whiteBalance_),
        horLpf_(context_, verLpf_),
        chromaSuppress_(context_, matrix_, horLpf_, hokanVH_),
        colorSystem_(context_, chromaSuppress_, matrix_),
        hokanLpf_(context_, whiteBalance_),
        aFilter_(context_, vhDiff_, verLpf_, horLpf_, hokanLpf_),
        ramen_(context_, aFilter_, horLpf_, hokanVH_),
        hApc_(context_, ramen_),
        rApc_(context_, hokanLpf_),
        vApc_(context_, hokanLpf_),
        aApc_(context_, aFilter_),
        yMain_(context_, ramen_, colorSystem_, hApc_, rApc_, vApc_, aApc_),
        lastStage_(context_, outputSampleBytes, colorSystem_, yMain_) {}

 private:
  ComponentX& last() override { return lastStage_; }
  void ReadBefore(int line) override { source_.ReadBefore(line); }
  Result Deliver(CallerStream& output) override { return lastStage_.Deliver(output); }

  const StageContext context_;
  SourceStreamReader source_;
  WhiteBalance<T> whiteBalance_;
  VHDiff<T> vhDiff_;
  HokanVH<T> hokanVH_;
  HokanCircuit<T> hokanCircuit_;
  MedianCrCb<T> medianCrCb_;
  Matrix4x3<T> matrix_;
  VerLpfForAFilter<T> verLpf_;
  HorLpfForAFilter<T> horLpf_;
  ChromaSuppress<T> chromaSuppress_;
  ColorSystemProc<T> colorSystem_;
  AFilterHokanLpf<T> hokanLpf_;
  AFilterMain<T> aFilter_;
  RamenToYmix<T> ramen_;
  HApcProcs<T> hApc_;
  RApcProcs<T> rApc_;
  VApcProcs<T> vApc_;
  AApcProcs<T> aApc_;
  YMainProcs<T> yMain_;
  LastStageRgb<T> lastStage_;
};

}  // namespace deimg::DEIMG_LEVEL

#endif  // DEIMG_PIPELINE_PROCESSING_GRAPH_INL_H

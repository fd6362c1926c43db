/// The twenty components of a development, wired as the component table says.
#ifndef DEIMG_GRAPH_PROCESSING_GRAPH_H
#define DEIMG_GRAPH_PROCESSING_GRAPH_H

#include "api/result.h"
#include "graph/component_table.h"
#include "graph/last_stage_rgb.h"
#include "graph/source_stream_reader.h"
#include "graph/stage_context.h"
#include "stages/colour/chroma_suppress.h"
#include "stages/colour/color_system_proc.h"
#include "stages/colour/hokan_circuit.h"
#include "stages/colour/hokan_vh.h"
#include "stages/colour/matrix4x3.h"
#include "stages/colour/median_crcb.h"
#include "stages/colour/vh_diff.h"
#include "stages/colour/white_balance.h"
#include "stages/luma/a_apc_procs.h"
#include "stages/luma/a_filter_hokan_lpf.h"
#include "stages/luma/a_filter_main.h"
#include "stages/luma/h_apc_procs.h"
#include "stages/luma/hor_lpf_for_a_filter.h"
#include "stages/luma/r_apc_procs.h"
#include "stages/luma/ramen_to_ymix.h"
#include "stages/luma/v_apc_procs.h"
#include "stages/luma/ver_lpf_for_a_filter.h"
#include "stages/luma/ymain_procs.h"

namespace deimg {

/// T is the type of the mosaic's samples, see line.h. Owns the components; they are destroyed in
/// the reverse order of their construction.
template <typename T>
class ProcessingGraph {
 public:
  ProcessingGraph(CallerStream& plane, const StageContext& context, int outputSampleBytes,
                  const SensorRecord& sensor);

  /// Opens the output, pulls the image area's lines through the graph, reports progress and closes
  /// the output. `status` is the status word handed to Open; a nonzero word of the output or a
  /// component's failure ends the run with that code, and the output is not closed then.
  [[nodiscard]] Result Run(CallerStream& output, Result status);

  /// The component of a type; null when the graph has none.
  [[nodiscard]] ComponentX* Find(TypeId typeId);

 private:
  const SensorRecord& sensor_;
  SourceStreamReader source_;
  WhiteBalance<T> whiteBalance_;
  HokanVH<T> hokanVH_;
  VHDiff<T> vhDiff_;
  HokanCircuit<T> hokanCircuit_;
  MedianCrCb<T> medianCrCb_;
  Matrix4x3<T> matrix_;
  ChromaSuppress<T> chromaSuppress_;
  ColorSystemProc colorSystem_;
  VerLpfForAFilter<T> verLpf_;
  HorLpfForAFilter horLpf_;
  AFilterHokanLpf<T> hokanLpf_;
  AFilterMain<T> aFilter_;
  RamenToYmix<T> ramen_;
  YMainProcs yMain_;
  HApcProcs hApc_;
  RApcProcs<T> rApc_;
  VApcProcs<T> vApc_;
  AApcProcs aApc_;
  LastStageRgb lastStage_;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_PROCESSING_GRAPH_H

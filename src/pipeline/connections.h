/// The thirty-six connections of the processing graph, which its constructors make.
#ifndef DEIMG_PIPELINE_CONNECTIONS_H
#define DEIMG_PIPELINE_CONNECTIONS_H

#include "stages/component_table.h"

namespace deimg {

/// One component reads another.
struct Connection {
  TypeId consumer;
  TypeId input;
};

/// The inputs of one consumer stand in the order in which they are brought to a line, which is also
/// the order in which failures come out.
inline constexpr Connection kConnections[] = {
    {TypeId::kLastStageRgb, TypeId::kColorSystemProc},
    {TypeId::kLastStageRgb, TypeId::kYMainProcs},
    {TypeId::kYMainProcs, TypeId::kRamenToYmix},
    {TypeId::kYMainProcs, TypeId::kColorSystemProc},
    {TypeId::kYMainProcs, TypeId::kHApcProcs},
    {TypeId::kYMainProcs, TypeId::kRApcProcs},
    {TypeId::kYMainProcs, TypeId::kVApcProcs},
    {TypeId::kYMainProcs, TypeId::kAApcProcs},
    {TypeId::kRamenToYmix, TypeId::kAFilterMain},
    {TypeId::kRamenToYmix, TypeId::kHorLpfForAFilter},
    {TypeId::kRamenToYmix, TypeId::kHokanVH},
    {TypeId::kAFilterMain, TypeId::kVHDiff},
    {TypeId::kAFilterMain, TypeId::kVerLpfForAFilter},
    {TypeId::kAFilterMain, TypeId::kHorLpfForAFilter},
    {TypeId::kAFilterMain, TypeId::kAFilterHokanLpf},
    {TypeId::kHorLpfForAFilter, TypeId::kVerLpfForAFilter},
    {TypeId::kVerLpfForAFilter, TypeId::kWhiteBalance},
    {TypeId::kAFilterHokanLpf, TypeId::kWhiteBalance},
    {TypeId::kHApcProcs, TypeId::kRamenToYmix},
    {TypeId::kRApcProcs, TypeId::kAFilterHokanLpf},
    {TypeId::kVApcProcs, TypeId::kAFilterHokanLpf},
    {TypeId::kAApcProcs, TypeId::kAFilterMain},
    {TypeId::kColorSystemProc, TypeId::kChromaSuppress},
    {TypeId::kColorSystemProc, TypeId::kMatrix4x3},
    {TypeId::kChromaSuppress, TypeId::kMatrix4x3},
    {TypeId::kChromaSuppress, TypeId::kHorLpfForAFilter},
    {TypeId::kChromaSuppress, TypeId::kHokanVH},
    {TypeId::kMatrix4x3, TypeId::kHokanVH},
    {TypeId::kMatrix4x3, TypeId::kMedianCrCb},
    {TypeId::kMedianCrCb, TypeId::kHokanCircuit},
    {TypeId::kHokanCircuit, TypeId::kVHDiff},
    {TypeId::kHokanCircuit, TypeId::kWhiteBalance},
    {TypeId::kHokanVH, TypeId::kWhiteBalance},
    {TypeId::kHokanVH, TypeId::kVHDiff},
    {TypeId::kVHDiff, TypeId::kWhiteBalance},
    {TypeId::kWhiteBalance, TypeId::kSourceStreamReader},
};

}  // namespace deimg

#endif  // DEIMG_PIPELINE_CONNECTIONS_H

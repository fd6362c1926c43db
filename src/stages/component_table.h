/// The twenty components of the processing graph.
#ifndef DEIMG_STAGES_COMPONENT_TABLE_H
#define DEIMG_STAGES_COMPONENT_TABLE_H

#include "graph/component.h"

namespace deimg {

enum class TypeId : std::int32_t {
  kHokanCircuit = 2,
  kHorLpfForAFilter = 3,
  kVHDiff = 4,
  kSourceStreamReader = 6,
  kChromaSuppress = 13,
  kMatrix4x3 = 14,
  kColorSystemProc = 15,
  kMedianCrCb = 16,
  kHApcProcs = 19,
  kRApcProcs = 20,
  kVApcProcs = 23,
  kAApcProcs = 24,
  kLastStageRgb = 28,
  kYMainProcs = 29,
  kWhiteBalance = 30,
  kVerLpfForAFilter = 31,
  kAFilterHokanLpf = 32,
  kAFilterMain = 33,
  kRamenToYmix = 34,
  kHokanVH = 36,
};

/// Type number, display name, window and ports of every component. What the ports are called and
/// hold stands in each stage's file.
// clang-format off
inline constexpr ComponentInfo kComponents[] = {
    {TypeId::kSourceStreamReader, "Source Stream Reader", 1, 1},
    {TypeId::kWhiteBalance, "White Balance", 1, 1},
    {TypeId::kHokanVH, " hokan VH Proc ", 3, 4},
    {TypeId::kVHDiff, "VHDiff", 5, 1},
    {TypeId::kHokanCircuit, "\x95\xE2\x8A\xD4\x89\xF1\x98\x48", 3, 4},                          // 補間回路
    {TypeId::kMedianCrCb, "Median CrCb", 3, 2},
    {TypeId::kMatrix4x3, "4x3\x83\x7D\x83\x67\x83\x8A\x83\x4E\x83\x58", 1, 3},                  // 4x3マトリクス
    {TypeId::kChromaSuppress, "Chroma Suppress", 1, 2},
    {TypeId::kColorSystemProc, "\x90\x46\x8C\x6E\x8F\x88\x97\x9D", 1, 3},                       // 色系処理
    {TypeId::kVerLpfForAFilter, "VerLpf for A-Filter", 7, 1},
    {TypeId::kHorLpfForAFilter, "HorLpf for A-Filter after V-LPF", 1, 1},
    {TypeId::kAFilterHokanLpf, "A-Filter Hokan LPF", 1, 1},
    {TypeId::kAFilterMain, "A-Filter\x96\x7B\x91\xCC", 1, 1},                                   // A-Filter本体
    {TypeId::kRamenToYmix, "Ramen to YMIX", 1, 2},
    {TypeId::kYMainProcs, "YMain Procs", 1, 1},
    {TypeId::kHApcProcs, "H-APC Procs", 1, 2},
    {TypeId::kRApcProcs, "R-APC Procs", 7, 3},
    {TypeId::kVApcProcs, "V-APC Procs", 7, 1},
    {TypeId::kAApcProcs, "A-APC Procs", 1, 1},
    {TypeId::kLastStageRgb, "LastStage - RGB\x8F\x6F\x97\xCD\x89\xF1\x98\x48", 1, 1},           // RGB出力回路
};
// clang-format on

/// The table's entry of a component.
constexpr const ComponentInfo& InfoOf(TypeId typeId) {
  for (const ComponentInfo& info : kComponents) {
    if (info.typeId == typeId) return info;
  }
  return kComponents[0];  // not reached: every component of the graph is in the table
}

}  // namespace deimg

#endif  // DEIMG_STAGES_COMPONENT_TABLE_H

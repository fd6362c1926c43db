/// The processing graph as a table: twenty components and thirty-six connections.
#ifndef DEIMG_GRAPH_COMPONENT_TABLE_H
#define DEIMG_GRAPH_COMPONENT_TABLE_H

#include <cstdint>

namespace deimg {

/// Type numbers, by which components recognise their inputs.
enum class TypeId : std::int32_t {
  kHokanCircuit = 2,
  kHorLpfForAFilter = 3,
  kVHDiff = 4,
  kMedianFilter = 5,
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

/// What is fixed about a component.
struct ComponentInfo {
  TypeId typeId;
  const char* name;  // Shift-JIS
  int kernelLines;   // input lines that one output line needs
  int portCount;
};

/// The components in the order of their construction.
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

/// One component reads another.
struct Connection {
  TypeId consumer;
  TypeId input;
};

/// The connections in the order they are made, which is the order of each consumer's inputs.
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

/// The table's entry of a component.
constexpr const ComponentInfo& InfoOf(TypeId typeId) {
  for (const ComponentInfo& info : kComponents) {
    if (info.typeId == typeId) return info;
  }
  return kComponents[0];  // not reached: every component of the graph is in the table
}

}  // namespace deimg

#endif  // DEIMG_GRAPH_COMPONENT_TABLE_H

// All kernels, compiled once per instruction level: DEIMG_KERNELS names the level's table.
//
// Nothing with external linkage but the table may come out of this file, or code of one level could
// end up in a process that cannot run it: it includes kernels and plain types only.
#include "graph/kernels.h"

#include "decode/plane_kernels.h"
#include "decode/preview_kernels.h"
#include "graph/output_kernels.h"
#include "stages/colour/chroma_suppress_kernels.h"
#include "stages/colour/color_system_proc_kernels.h"
#include "stages/colour/hokan_circuit_kernels.h"
#include "stages/colour/hokan_vh_kernels.h"
#include "stages/colour/matrix4x3_kernels.h"
#include "stages/colour/median_crcb_kernels.h"
#include "stages/colour/mosaic_interpolation_kernels.h"
#include "stages/colour/vh_diff_kernels.h"
#include "stages/colour/white_balance_kernels.h"
#include "stages/luma/a_filter_main_kernels.h"
#include "stages/luma/apc_curve_kernels.h"
#include "stages/luma/h_apc_procs_kernels.h"
#include "stages/luma/hor_lpf_for_a_filter_kernels.h"
#include "stages/luma/r_apc_procs_kernels.h"
#include "stages/luma/ramen_to_ymix_kernels.h"
#include "stages/luma/v_apc_procs_kernels.h"
#include "stages/luma/ver_lpf_for_a_filter_kernels.h"
#include "stages/luma/ymain_procs_kernels.h"

namespace deimg {

template <typename T>
static constexpr MosaicKernels<T> kMosaicKernels = {
    .whiteBalanceLine = WhiteBalanceLine<T>,
    .directionMeasureLine = DirectionMeasureLine<T>,
    .interpolateMosaicLine = InterpolateMosaicLine<T>,
    .exchangeGreensLine = ExchangeGreensLine<T>,
    .colourDifferenceLine = ColourDifferenceLine<T>,
    .medianLine = MedianLine<T>,
    .matrixRowLine = MatrixRowLine<T>,
    .matrixPairLine = MatrixPairLine<T>,
    .suppressionLevelLine = SuppressionLevelLine<T>,
    .spreadEvenColumnsLine = SpreadEvenColumnsLine<T>,
    .spreadOddColumnsLine = SpreadOddColumnsLine<T>,
    .verLpfLine = VerLpfLine<T>,
    .aFilterLine = AFilterLine<T>,
    .verticalHighPass3Line = VerticalHighPass3Line<T>,
    .verticalHighPass7Line = VerticalHighPass7Line<T>,
    .verticalSmooth5Line = VerticalSmooth5Line<T>,
    .verticalSmooth7Line = VerticalSmooth7Line<T>,
    .sharpenLine = SharpenLine<T>,
    .mixLine = MixLine<T>,
};

extern const Kernels DEIMG_KERNELS;
const Kernels DEIMG_KERNELS = {
    .narrowMosaic = kMosaicKernels<NarrowSample>,
    .wideMosaic = kMosaicKernels<Sample>,
    .rgbLine8 = RgbLine8,
    .rgbLine16 = RgbLine16,
    .exposureLine = ExposureLine,
    .largestLevelLine = LargestLevelLine,
    .suppressLine = SuppressLine,
    .toRgbLine9 = ToRgbLine9,
    .toRgbLine7 = ToRgbLine7,
    .toColourDifferencesLine = ToColourDifferencesLine,
    .chromaLevelLine = ChromaLevelLine,
    .adjustColourDifferencesLine = AdjustColourDifferencesLine,
    .horLpfLine = HorLpfLine,
    .addDetailLine = AddDetailLine,
    .apcCurveLine = ApcCurveLine,
    .narrowHighPassLine = NarrowHighPassLine,
    .wideHighPassLine = WideHighPassLine,
    .smoothDetailLine = SmoothDetailLine,
    .horizontalSmooth121Line = HorizontalSmooth121Line,
    .horizontalSmooth5Line = HorizontalSmooth5Line,
    .scaleLuminanceLine = ScaleLuminanceLine,
    .addDetailsLine = AddDetailsLine,
    .correctByChromaLine = CorrectByChromaLine,
    .mergeLowBitsLine = MergeLowBitsLine,
    .subtractLevelsLine = SubtractLevelsLine,
    .splitPositionLine = SplitPositionLine,
    .weightGridLine = WeightGridLine,
    .shrinkRow = ShrinkRow,
    .halveRow = HalveRow,
};

}  // namespace deimg

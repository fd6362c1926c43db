#include "api/develop_job.h"

#include "api/develop_params.h"
#include "decode/black_level_subtraction.h"
#include "decode/sensor_plane_decoder.h"
#include "graph/graph_builder.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

/// Memory that has to remain besides a plane held in memory.
constexpr std::uint64_t kMemoryMargin = 2097152;

}  // namespace

Result DevelopJob::Run() {
  SettleParams(params_);
  DEIMG_RETURN_IF_FAILED(Report(1));
  DEIMG_RETURN_IF_FAILED(ReadProperties());
  DEIMG_RETURN_IF_FAILED(DeriveGeometries());
  DEIMG_RETURN_IF_FAILED(MakePlane());
  DEIMG_RETURN_IF_FAILED(FillPlane());
  return DevelopFull();
}

Result DevelopJob::ReadProperties() {
  if (input_.Open == nullptr || input_.Close == nullptr || input_.Read == nullptr ||
      input_.Seek == nullptr || input_.Tell == nullptr) {
    return DEIMG_MISSING;
  }
  DEIMG_RETURN_IF_FAILED(Open(input_, DEIMG_OPEN_READ));
  {
    ImagePropsBlock block;
    DEIMG_RETURN_IF_FAILED(ReadImagePropsBlock(input_, block));
    DEIMG_RETURN_IF_FAILED(pxfPsReadOpenImageProps(block, props_));
  }
  return Close(input_);
}

Result DevelopJob::DeriveGeometries() {
  geometry_ = DeriveGeometry(props_.sensor);
  reduced_ = ReduceGeometry(geometry_);
  return IsSupported(geometry_) ? DEIMG_OK : DEIMG_UNSUPPORTED;
}

Result DevelopJob::MakePlane() {
  const std::uint64_t planeBytes = PlaneBytes(geometry_);
  // A snapshot of what is free, not a reservation.
  if (BlockOf<std::uint8_t>::Zeroed(planeBytes + kMemoryMargin)) {
    planeInMemory_ = MemoryStream::Make(planeBytes);
    return planeInMemory_ ? DEIMG_OK : DEIMG_OUT_OF_MEMORY;
  }
  return FileStream::MakeTemporary(planeFile_);
}

Result DevelopJob::FillPlane() {
  DEIMG_RETURN_IF_FAILED(SensorPlaneDecoder(input_, geometry_, props_, plane()));
  return BlackLevelSubtraction(geometry_, plane(), props_.blackLevelWords);
}

Result DevelopJob::DevelopFull() {
  if (flags_ == DEIMG_JOB_QUICK) ForceQuickSettings();
  return GraphBuilder(plane(), params_, props_, format_, output_);
}

void DevelopJob::ForceQuickSettings() {
  params_.chromaMedian = -1;
  params_.processingSet = 3;
  params_.matrixSelect = 0;
}

Result DevelopJob::Report(int percent) {
  if (output_.Progress == nullptr || output_.progressMode != DEIMG_PROGRESS_ALL) return DEIMG_OK;
  std::uint32_t error = 0;
  output_.Progress(output_.cookie, static_cast<std::uint16_t>(percent), &error);
  return error;
}

}  // namespace deimg

#include "api/develop_job.h"

#include "decode/black_level_subtraction.h"
#include "decode/point_white_balance.h"
#include "decode/preview_reduction.h"
#include "decode/sensor_plane_decoder.h"
#include "pipeline/graph_builder.h"
#include "pipeline/settings.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

/// Memory that has to remain besides a plane held in memory.
constexpr std::uint64_t kMemoryMargin = 2097152;

}  // namespace

Result DevelopJob::Run() {
  ApplyDefaults(params_);
  DEIMG_RETURN_IF_FAILED(Report(1));
  DEIMG_RETURN_IF_FAILED(ReadProperties());
  DEIMG_RETURN_IF_FAILED(DeriveGeometries());
  DEIMG_RETURN_IF_FAILED(MakePlane());
  DEIMG_RETURN_IF_FAILED(FillPlane());
  DEIMG_RETURN_IF_FAILED(BalanceFromPoint());
  if (kind_.quick) ForceQuickSettings(params_);
  if (!kind_.reduced) {
    return Develop(planeInMemory_, sensorPlane(), geometry_, format_.sampleBytes, output_);
  }
  DEIMG_RETURN_IF_FAILED(ReducePlane());
  return kind_.thumbnail ? DevelopThumbnail() : DevelopReduced(output_);
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
  if (!IsSupported(geometry_)) return DEIMG_UNSUPPORTED;
  return !kind_.reduced || IsSupportedReduced(reduced_) ? DEIMG_OK : DEIMG_UNSUPPORTED;
}

Result DevelopJob::MakePlane() {
  const std::uint64_t planeBytes = PlaneBytes(geometry_);
  // A snapshot of what is free, not a reservation: nobody touches the block.
  if (BlockOf<std::uint8_t>::Uninitialised(planeBytes + kMemoryMargin)) {
    planeInMemory_ = MemoryStream::MakeUninitialised(planeBytes);
    return planeInMemory_ ? DEIMG_OK : DEIMG_OUT_OF_MEMORY;
  }
  return FileStream::MakeTemporary(planeFile_);
}

Result DevelopJob::FillPlane() {
  // A picture whose settings are known already can be developed while its plane is decoded.
  if (planeInMemory_ && !kind_.reduced && !MeasuresPoint()) {
    OfferBands(planeInMemory_, geometry_, format_.sampleBytes);
  }
  const auto linesReady = [](void* self, int lines) {
    auto& bands = static_cast<DevelopJob*>(self)->bands_;
    if (bands) bands->LinesReady(lines);
  };
  DEIMG_RETURN_IF_FAILED(SensorPlaneDecoder(level_.planeLines(), input_, geometry_, props_,
                                            sensorPlane(), {linesReady, this}));
  // Lines in memory are without their black levels already.
  if (planeInMemory_) return DEIMG_OK;
  return BlackLevelSubtraction(level_.planeLines(), geometry_, plane(), props_.blackLevelWords);
}

bool DevelopJob::MeasuresPoint() const {
  return params_.whiteBalance.wbGainsSet != 1 && params_.wbPreset == DEIMG_WB_POINT;
}

Result DevelopJob::BalanceFromPoint() {
  if (!MeasuresPoint()) return DEIMG_OK;
  if (params_.wbPointX < 0 || params_.wbPointX >= geometry_.areaWidth || params_.wbPointY < 0 ||
      params_.wbPointY >= geometry_.areaHeight) {
    return DEIMG_UNSUPPORTED;
  }
  return PointWhiteBalance(plane(), geometry_, params_);
}

Result DevelopJob::ReducePlane() {
  previewPlanes_ = MemoryStream::Make(4 * PlaneBytes(reduced_));
  if (!previewPlanes_) return DEIMG_OUT_OF_MEMORY;
  return PreviewReduction(level_.planeLines(), sensorPlane(), geometry_, reduced_,
                          previewPlanes_.samples());
}

Result DevelopJob::DevelopReduced(CallerStream& output) {
  return Develop(previewPlanes_, {*previewPlanes_.get(), previewPlanes_.samples()}, reduced_, 1,
                 output);
}

void DevelopJob::OfferBands(const MemoryStream& plane, const ImageGeometry& geometry,
                            int sampleBytes) {
  if (!bands_) return;
  DevelopParams params = params_;
  if (kind_.quick) ForceQuickSettings(params);
  bands_->Offer(level_, plane, geometry, params, props_, sampleBytes);
}

Result DevelopJob::Develop(const MemoryStream& planeInMemory, const SensorPlane& plane,
                           const ImageGeometry& geometry, int sampleBytes, CallerStream& output) {
  if (bands_ && planeInMemory) {
    if (!bands_->isOffered()) OfferBands(planeInMemory, geometry, sampleBytes);
    bands_->LinesReady(geometry.sensorHeight);
  }
  return GraphBuilder(level_, plane, geometry, params_, props_, sampleBytes, output,
                      bands_ ? &*bands_ : nullptr);
}

Result DevelopJob::DevelopThumbnail() {
  previewPicture_ = MemoryStream::Make(3ull * reduced_.outWidth * reduced_.outHeight);
  if (!previewPicture_) return DEIMG_OUT_OF_MEMORY;
  DEIMG_RETURN_IF_FAILED(Report(7));
  DEIMG_RETURN_IF_FAILED(DevelopReduced(*previewPicture_.get()));
  DEIMG_RETURN_IF_FAILED(Report(50));
  if (!thumbnail_.Allocate()) return DEIMG_OUT_OF_MEMORY;
  thumbnail_.Resample(previewPicture_.memory(), reduced_.outWidth, reduced_.outHeight);
  previewPicture_ = MemoryStream();
  DEIMG_RETURN_IF_FAILED(Report(70));
  return DeliverThumbnail();
}

Result DevelopJob::DeliverThumbnail() {
  if (output_.Open == nullptr || output_.Write == nullptr || output_.Close == nullptr) {
    return DEIMG_MISSING;
  }
  DEIMG_RETURN_IF_FAILED(Open(output_, DEIMG_OPEN_TRUNCATE));
  for (int y = 0; y < DEIMG_THUMBNAIL_HEIGHT; ++y) {
    DEIMG_RETURN_IF_FAILED(Write(output_, thumbnail_.row(y), ThumbnailBuffer::kRowBytes));
  }
  if (output_.progressMode != DEIMG_PROGRESS_NEVER) DEIMG_RETURN_IF_FAILED(Progress(output_, 100));
  return Close(output_);
}

Result DevelopJob::Report(int percent) {
  return output_.progressMode == DEIMG_PROGRESS_ALL ? Progress(output_, percent) : Result{DEIMG_OK};
}

}  // namespace deimg

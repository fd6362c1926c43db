#include "pipeline/development.h"

#include "pipeline/development_tables.h"
#include "pipeline/settings.h"

namespace deimg {

Result Development::Derive(DevelopParams& params, const ImageProps& props) {
  DEIMG_RETURN_IF_FAILED(ResolveSettings(params, props, settings));
  tuning = TuningBlock::Load(props.tuningBlock);
  DEIMG_RETURN_IF_FAILED(DeriveTables(props, settings, tables));
  return ResolveIndices(props, settings);
}

}  // namespace deimg

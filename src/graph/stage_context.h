/// What every stage of a job is given.
#ifndef DEIMG_GRAPH_STAGE_CONTEXT_H
#define DEIMG_GRAPH_STAGE_CONTEXT_H

#include "graph/develop_settings.h"
#include "graph/development_tables.h"
#include "graph/kernels.h"
#include "props/tuning_block.h"

namespace deimg {

/// Kernels, settings, tuning and plane size of the job; outlives its stages.
struct StageContext {
  const Kernels& kernels;
  const DevelopSettings& settings;
  const DevelopmentTables& tables;
  TuningBlock tuning;
  int width;
  int height;
};

}  // namespace deimg

#endif  // DEIMG_GRAPH_STAGE_CONTEXT_H

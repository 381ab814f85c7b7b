#pragma once

#include "cli/Ranks.h"
#include "reference_host/HostPartition.h"

namespace zyngrad {

/// Collective. Mean distance between the centres of two cells that share a face, over the whole mesh, L; the
/// same on every rank. Infinite for a mesh of one cell.
double MeanCellDistance(const Ranks& ranks, reference_host::HostPartition& partition);

}  // namespace zyngrad

#pragma once

#include "cli/base/Ranks.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Collective. Mean distance between the centres of two cells that share a face, over the whole mesh, L; the
/// same on every rank. Infinite for a mesh of one cell.
double MeanCellDistance(Ranks const& ranks, reference_host::HostPartition& partition);

/// Significant digits with which printed places differ.
/// @param[in] largest  magnitude of their coordinates, L
/// @param[in] nearest  distance of two of them, L
int PlaceDigits(double largest, double nearest);

/// Significant digits with which the printed places of two cells that share a face differ: more than kPlaceDigits
/// only in a mesh that lies far from the origin or has very thin cells. Of this partition.
int PlaceDigits(reference_host::HostPartition& partition);

/// Collective. The same over the whole mesh and on every rank.
int PlaceDigits(Ranks const& ranks, reference_host::HostPartition& partition);

}  // namespace zyngrad

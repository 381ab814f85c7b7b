#pragma once

#include "cli/base/Ranks.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Collective. Mean distance between the centres of two cells that share a face, over the whole mesh, L; the
/// same on every rank. Infinite for a mesh of one cell.
double MeanCellDistance(Ranks const& ranks, reference_host::HostPartition& partition);

/// Number of significant digits with which printed places differ.
/// @param[in] largest  magnitude of their coordinates, L
/// @param[in] nearest  smallest distance between two of them, L
int PlaceDigits(double largest, double nearest);

/// Number of significant digits with which the printed places of two cells that share a face differ, in this
/// partition. More than kPlaceDigits only if the mesh lies far from the origin or has very thin cells.
int PlaceDigits(reference_host::HostPartition& partition);

/// Collective. The same over the whole mesh and on every rank.
int PlaceDigits(Ranks const& ranks, reference_host::HostPartition& partition);

}  // namespace zyngrad

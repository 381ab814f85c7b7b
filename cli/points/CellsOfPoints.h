#pragma once

#include <vector>

#include "cli/base/Ranks.h"
#include "cli/points/PointSet.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Collective. For each point the aspect ratio of the cell around it, at least 1, or 0 if it lies outside the mesh; the
/// same on every rank. A point on a face, edge or node belongs to all cells there, and the largest ratio counts.
///
/// The cells are divided into tetrahedra between their centre and the triangles of their faces; a point is in a cell if
/// it is in one of them, up to a millionth of its height.
/// @param[in] points  the same on every rank
std::vector<double> AspectRatiosAt(Ranks const& ranks, reference_host::HostPartition& partition,
                                   PointSet const& points);

/// The longest over the shortest extent of an interior cell: the square root of the ratio of the largest to the
/// smallest principal moment of its nodes around their mean. It is 1 for a cube and for a regular tetrahedron, and a/b
/// for a box of a x a x b. Directions in which the cell has no neighbour do not count: in a mesh of one layer, that
/// across it.
double AspectRatioOf(reference_host::HostPartition& partition, int cell);

}  // namespace zyngrad

#pragma once

#include <vector>

#include "cli/base/Ranks.h"
#include "cli/points/PointSet.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Collective. For each point the aspect ratio around the cell that contains it, at least 1, or 0 if it lies outside the mesh; the
/// same on every rank. A point on a face, edge or node belongs to all cells there, and the largest ratio counts.
///
/// The cells are divided into tetrahedra between their centre and the triangles of their faces; a point is in a cell if
/// it is in one of them, up to a millionth of its height.
/// @param[in] points  the same on every rank
std::vector<double> AspectRatiosAt(Ranks const& ranks, reference_host::HostPartition& partition,
                                   PointSet const& points);

/// How much farther apart cells are in one direction than in another around an interior cell: the square root of the
/// ratio of the largest to the smallest principal moment of the centres of the cells that share a node with it, around
/// their mean. It is a/b for boxes of a x a x b, and near 1 for tetrahedra of any shape that fill space evenly. At the
/// boundary of the mesh, where cells are missing on one side, it may be 1.7 times too large, where two meet 2.8 times.
/// In a mesh of one layer the direction across it does not count.
double AspectRatioOf(reference_host::HostPartition& partition, int cell);

}  // namespace zyngrad

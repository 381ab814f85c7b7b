#pragma once

#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/Expression.h"
#include "cli/points/PointSet.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// A point where the surface of a body meets an edge between two nodes, or a node.
struct SurfacePoint {
  std::int64_t low = 0, high = 0;  ///< 1-based numbers in the mesh of the two nodes; equal: the node
  double at[3] = {0.0, 0.0, 0.0};  ///< L
};

/// The points where the surface `body` = 0 meets the cells of this partition, each once, ascending by
/// (low, high).
///
/// Every cell is divided into tetrahedra without new nodes: each face into triangles from its lowest node, and
/// these joined with the lowest node of the cell. By numbers of the whole mesh, so neighbours divide their
/// common face alike, whatever the partition. Where an edge of a tetrahedron goes from inside (`body` < 0) to
/// outside, the place is found by bisection. A node nearer to the surface than 1e-6 of `length`, judged by
/// |f| / |grad f|, is itself the point: the edges that meet there would each give nearly the same one.
/// @param[in] length  of a cell, L
/// Throws UsageError naming the place where the formula is not finite.
std::vector<SurfacePoint> SurfacePointsOf(reference_host::HostPartition& partition, Expression const& body,
                                          double length);

/// The first of those points that are nearer to each other than `spacing`, in their order.
std::vector<SurfacePoint> Thinned(std::vector<SurfacePoint> const& points, double spacing);

/// Collective. The points of all partitions, each once and thinned, in an order that does not depend on the
/// partition, on the first rank; nothing on the others. Throws UsageError when the surface meets no cell.
/// @param[in] spacing  0: all points
PointSet PointsOnSurface(Ranks const& ranks, reference_host::HostPartition& partition, Expression const& body,
                         double spacing, double length);

}  // namespace zyngrad

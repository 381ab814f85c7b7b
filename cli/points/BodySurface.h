#pragma once

#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/Expression.h"
#include "cli/points/PointSet.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// A point where the surface of a body crosses the edge between two nodes, or touches a node.
struct SurfacePoint {
  std::int64_t low = 0,
               high = 0;  ///< 1-based numbers in the mesh of the two nodes; equal for a point at a node
  double at[3] = {0.0, 0.0, 0.0};  ///< L
};

/// The points where the surface `body` = 0 intersects the cells of this partition, each once, in ascending order
/// of (low, high).
///
/// Every cell is divided into tetrahedra without new nodes: each face is divided into triangles from its lowest
/// node, and these are joined with the lowest node of the cell. "Lowest" refers to the numbers in the whole mesh,
/// so that neighbours divide their common face alike in every partition. Where an edge of a tetrahedron goes from
/// inside (`body` < 0) to outside, bisection finds the point. A node within 1e-6 `length` of the surface, estimated
/// by |f| / |grad f|, is itself the point, because the edges at this node would give nearly the same point.
/// @param[in] length  of a cell, L
/// Throws UsageError that names the place where the formula is not finite.
std::vector<SurfacePoint> SurfacePointsOf(reference_host::HostPartition& partition, Expression const& body,
                                          double length);

/// The points without those that are closer than `spacing` to an earlier one that is kept, in their order.
std::vector<SurfacePoint> Thinned(std::vector<SurfacePoint> const& points, double spacing);

/// Collective. The points of all partitions, each once and thinned, in an order that does not depend on the
/// partition; on the first rank only. Throws UsageError if the surface does not intersect any cell.
/// @param[in] spacing  0 keeps all points
PointSet PointsOnSurface(Ranks const& ranks, reference_host::HostPartition& partition, Expression const& body,
                         double spacing, double length);

}  // namespace zyngrad

#pragma once

#include <array>
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

/// A corner of a triangle, by the two nodes of its point.
struct SurfaceCorner {
  std::int64_t low = 0, high = 0;
};

/// The surface of a body in one partition.
struct BodyParts {
  std::vector<SurfacePoint> points;  ///< each once, in ascending order of (low, high)
  std::vector<std::array<SurfaceCorner, 3>>
      triangles;  ///< between these points; they turn around the outward normal
};

/// The points where the surface `body` = 0 intersects the cells of this partition, and the triangles between them.
///
/// Every cell is divided into tetrahedra without new nodes: each face is divided into triangles from its lowest
/// node, and these are joined with the lowest node of the cell. "Lowest" refers to the numbers in the whole mesh,
/// so that neighbours divide their common face alike in every partition. Where an edge of a tetrahedron goes from
/// inside (`body` < 0) to outside, bisection finds the point. A node within 1e-6 `length` of the surface, estimated
/// by |f| / |grad f|, is itself the point, because the edges at this node would give nearly the same point.
///
/// A tetrahedron with nodes inside and others that are not contains one or two triangles. Their edges lie in its faces
/// and depend only on the nodes of these faces, so that the triangles of all partitions fit together: each edge inside
/// the mesh belongs to two of them, which go along it in opposite directions. At the mesh's boundary the surface is
/// open.
/// @param[in] length  of a cell, L
/// Throws UsageError that names the place where the formula is not finite.
BodyParts SurfaceOf(reference_host::HostPartition& partition, Expression const& body, double length);

/// Collective. The points of all partitions, each once and thinned, and the triangles between them, in an order that
/// does not depend on the partition; on the first rank only. Throws UsageError if the surface does not intersect any
/// cell.
/// @param[in] spacing  0 keeps all points
PointSet PointsOnSurface(Ranks const& ranks, reference_host::HostPartition& partition, Expression const& body,
                         double spacing, double length);

}  // namespace zyngrad

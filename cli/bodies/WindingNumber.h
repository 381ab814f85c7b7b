#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "cli/bodies/TriangleSurface.h"
#include "cli/bodies/Vector3.h"

namespace zyngrad {

/// Says how often a surface of triangles winds around a point: the solid angle under which the point sees the
/// triangles, over 4 pi. It is 1 inside a closed surface and 0 outside. Through the holes of an open surface it changes
/// smoothly, so that 1/2 divides inside from outside without any repair of the surface. @cite jacobson2013, barill2018
///
/// A tree over the triangles makes this fast: a group of triangles whose extent is small against its distance counts as
/// one vector of area at the centre of the group.
class WindingNumber {
 public:
  WindingNumber(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles);

  /// Differs from the sum over all triangles by less than 0.03.
  double At(Vector3 const& place) const;

  /// Whether the place is in the box around the surface and the winding number exceeds 1/2. A place on the surface,
  /// whose winding number is 1/2 up to rounding, is outside, like a place where the formula of a body is 0.
  bool IsInside(Vector3 const& place) const;

 private:
  struct Corners {
    Vector3 at[3];
  };
  struct Group {
    Vector3 centre;         ///< mean of the triangles' centres, weighted by area, L
    Vector3 area;           ///< sum of the area vectors, L^2
    double farFrom2 = 0.0;  ///< square of the distance from which on the group counts as one vector, L^2
    std::int32_t begin = 0, end = 0;  ///< its triangles
    std::int32_t second =
        0;  ///< the second half of a divided group; the first one follows it directly. 0: a leaf
  };

  void AddGroup(std::int32_t begin, std::int32_t end);

  std::vector<Corners> triangles_;  ///< in the order of the leaves
  std::vector<Group> groups_;
  Vector3 low_{}, high_{};
};

}  // namespace zyngrad

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cli/bodies/Vector3.h"

namespace zyngrad {

/// Three points of a set, from 0. By the right-hand rule they turn around the outward normal.
using Triangle = std::array<std::int64_t, 3>;

/// What is odd about the triangles of a surface.
struct SurfaceFaults {
  std::int64_t nCollapsed = 0;  ///< triangles with two corners at one place; left out of the surface
  std::int64_t nFlat = 0;       ///< triangles without area that remain, with three different corners
  std::int64_t nOpen = 0;       ///< edges of a single triangle
  std::int64_t nTurned = 0;    ///< edges of several triangles that do not cancel: neighbours turn differently
  bool pointedInward = false;  ///< whether all triangles were turned around

  bool IsClosed() const { return nOpen == 0 && nTurned == 0; }
};

/// Triangles whose corners are shared.
struct TriangleSurface {
  std::vector<Vector3> points;  ///< L, each place once
  std::vector<Triangle> triangles;
  SurfaceFaults faults;
};

/// Joins corners at one place, leaves out triangles that collapse, and turns all triangles around if they enclose a
/// negative volume. The points are in the order in which they first occur. Two corners are at one place if their
/// distance is at most `kWeldRange` of the diagonal of the box around all corners: the same corner, written with
/// 6 digits or in single precision, may differ by that much.
/// @param[in] corners  as ReadStl returns them
TriangleSurface WeldTriangles(std::vector<double> const& corners);
constexpr double kWeldRange = 1e-6;

/// Counts the faults among edges and areas; `pointedInward` and `nCollapsed` stay 0.
SurfaceFaults FaultsOf(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles);

/// Half the cross product of two edges: its direction is the outward normal, its length the area. L^2
Vector3 AreaVector(std::vector<Vector3> const& points, Triangle const& triangle);

/// L^2
double AreaOf(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles);

/// The volume that a closed surface encloses, L^3; of an open one, together with the cone from its edges to the first
/// point.
double VolumeOf(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles);

/// One sentence for each fault, without a full stop; empty if there is none.
std::vector<std::string> InWords(SurfaceFaults const& faults);

}  // namespace zyngrad

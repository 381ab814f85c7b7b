#pragma once

#include <cstddef>
#include <vector>

#include "cli/bodies/TriangleSurface.h"
#include "cli/points/PointRun.h"
#include "cli/points/PointSet.h"

namespace zyngrad {

/// The outward normals of a surface through points, of length 1; zero for a point or triangle without area around it.
struct SurfaceNormals {
  std::vector<double> px, py, pz;  ///< [point] direction of the sum of the area vectors of its triangles
  std::vector<double> tx, ty, tz;  ///< [triangle]
  std::vector<double> area;        ///< [triangle], L^2
};

/// Empty if the points have no triangles.
SurfaceNormals NormalsOf(PointSet const& points);

/// [point] slope along the normal n there, dphi/dn = grad phi . n, U/L
std::vector<double> SlopeAlongNormal(PointValues const& values, SurfaceNormals const& normals);

/// Values at the triangles, the means of their corners'.
struct TriangleValues {
  std::vector<double> value;       ///< U
  std::vector<double> gx, gy, gz;  ///< U/L
  std::vector<double> slope;       ///< along the normal of the triangle, U/L
};

TriangleValues AtTriangles(PointSet const& points, PointValues const& values, SurfaceNormals const& normals);

/// What a surface and a field on it add up to; areas of second order in the size of the triangles.
struct SurfaceIntegrals {
  double value = 0.0;  ///< of phi, U L^2
  double nx = 0.0, ny = 0.0,
         nz = 0.0;     ///< of phi n, U L^2: with a pressure, the force on the inside with opposite sign
  double slope = 0.0;  ///< of dphi/dn, U L
};

SurfaceIntegrals IntegralsOf(TriangleValues const& values, SurfaceNormals const& normals);

/// The size of the surface of points.
struct SurfaceSize {
  double area = 0.0, volume = 0.0;  ///< L^2, L^3; the volume if it is closed
  SurfaceFaults faults;
};

SurfaceSize SizeOf(PointSet const& points);

}  // namespace zyngrad

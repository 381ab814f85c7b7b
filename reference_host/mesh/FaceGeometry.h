#pragma once

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Position and size of one face.
struct FaceGeometry {
  Point centre;  ///< L
  Point area;    ///< area vector, L^2; the nodes go around it by the right-hand rule
};

/// What a cell needs of a face besides its geometry: the fan of triangles t between the apex and each edge of
/// the face.
struct FaceFan {
  Point apex;  ///< average of the nodes, common corner of all triangles, L
  Point area;  ///< sum of the triangle vectors S_t, L^2

  /// sum over t of r_t S_t', where r_t is the centroid of triangle t relative to the apex; row by row, L^3.
  /// So sum over t of r_t (S_t . h) = spread h for any vector h. Zero for a triangular face.
  std::array<Point, 3> spread;
};

/// The triangles around the average of a face's nodes.
/// @param[in] points  coordinates by node number
/// @param[in] nodes   [0..n-1] the face's nodes in order around it, n >= 3
FaceFan ComputeFaceFan(std::vector<Point> const& points, int const* nodes, int n);

/// Area vector S = sum of the triangle vectors S_t, and centre = sum of c_t (S_t . S) / (S . S) with the
/// triangle centroids c_t. The weights are areas projected on S, so that the centre of a warped face does not
/// depend on the origin. The centre of a face without area is the average of its nodes.
FaceGeometry ComputeFaceGeometry(FaceFan const& fan);

/// The same from the nodes; parameters as for ComputeFaceFan.
FaceGeometry ComputeFaceGeometry(std::vector<Point> const& points, int const* nodes, int n);

/// Position in `nodes` of the first of the three consecutive nodes (cyclically) that span the face's plane
/// best: those with the largest (n2 - n1) x (n3 - n1) . area. The first three nodes of a row that starts
/// there are a proper triangle even if the face has collinear nodes or is warped.
int BestSpanningTriple(std::vector<Point> const& points, int const* nodes, int n, Point const& area);

}  // namespace reference_host

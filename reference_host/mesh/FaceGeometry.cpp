#include "reference_host/mesh/FaceGeometry.h"

#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

/// Average of the nodes relative to the first one. Differences of nearby points are exact or nearly so; sums
/// of coordinates are not if the mesh lies far from the origin.
Point AverageFromFirst(std::vector<Point> const& points, int const* nodes, int n) {
  Point sum = {0.0, 0.0, 0.0};
  for (int i = 1; i < n; ++i) sum = Sum(sum, Difference(points[nodes[i]], points[nodes[0]]));
  return Scaled(1.0 / n, sum);
}

/// A single triangle needs no fan: it has one normal, so the spread is zero.
FaceFan TriangleFan(std::vector<Point> const& points, int const* nodes) {
  Point const& first = points[nodes[0]];
  Point const e1 = Difference(points[nodes[1]], first);
  Point const e2 = Difference(points[nodes[2]], first);
  FaceFan fan{};
  fan.apex = Sum(first, Scaled(1.0 / 3, Sum(e1, e2)));
  fan.area = Scaled(0.5, Cross(e1, e2));
  return fan;
}

void AddOuterProduct(std::array<Point, 3>& matrix, Point const& r, Point const& s) {
  for (std::size_t i = 0; i < 3; ++i) matrix[i] = Sum(matrix[i], Scaled(r[i], s));
}

}  // namespace

FaceFan ComputeFaceFan(std::vector<Point> const& points, int const* nodes, int n) {
  if (n == 3) return TriangleFan(points, nodes);

  Point const& first = points[nodes[0]];
  Point const average = AverageFromFirst(points, nodes, n);
  FaceFan fan{};
  fan.apex = Sum(first, average);

  // Triangle t has the corners apex, node i, node i+1; seen from the apex 0, e, eNext.
  // S_t = e x eNext / 2,  r_t = (e + eNext) / 3.
  Point e = Scaled(-1.0, average);
  for (int i = 0; i < n; ++i) {
    Point const& nextNode = points[nodes[i + 1 < n ? i + 1 : 0]];
    Point const eNext = Difference(Difference(nextNode, first), average);
    Point const triangleArea = Scaled(0.5, Cross(e, eNext));
    fan.area = Sum(fan.area, triangleArea);
    AddOuterProduct(fan.spread, Scaled(1.0 / 3, Sum(e, eNext)), triangleArea);
    e = eNext;
  }
  return fan;
}

FaceGeometry ComputeFaceGeometry(FaceFan const& fan) {
  double const area2 = Dot(fan.area, fan.area);
  if (!(area2 > 0.0)) return {fan.apex, fan.area};

  // Seen from the apex: centre = sum over t of r_t (S_t . S) / (S . S) = spread S / (S . S).
  Point const offset = {Dot(fan.spread[0], fan.area) / area2, Dot(fan.spread[1], fan.area) / area2,
                        Dot(fan.spread[2], fan.area) / area2};
  return {Sum(fan.apex, offset), fan.area};
}

FaceGeometry ComputeFaceGeometry(std::vector<Point> const& points, int const* nodes, int n) {
  return ComputeFaceGeometry(ComputeFaceFan(points, nodes, n));
}

int BestSpanningTriple(std::vector<Point> const& points, int const* nodes, int n, Point const& area) {
  if (n == 3) return 0;
  int best = 0;
  double bestProjection = 0.0;
  for (int i = 0; i < n; ++i) {
    Point const& n1 = points[nodes[i]];
    Point const to2 = Difference(points[nodes[(i + 1) % n]], n1);
    Point const to3 = Difference(points[nodes[(i + 2) % n]], n1);
    double const projection = Dot(Cross(to2, to3), area);
    if (i == 0 || projection > bestProjection) {
      best = i;
      bestProjection = projection;
    }
  }
  return best;
}

}  // namespace reference_host

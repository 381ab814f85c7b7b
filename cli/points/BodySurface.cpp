#include "cli/points/BodySurface.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/base/UsageError.h"
#include "cli/bodies/TriangleSurface.h"
#include "cli/output/MeshScale.h"
#include "cli/points/SurfaceAsPoints.h"
#include "cli/vtk/PartitionGrid.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

constexpr double kOnSurface = 1e-6;

enum Side : signed char { kInside = -1, kOnIt = 0, kOutside = 1 };

bool ComesBefore(SurfacePoint const& a, SurfacePoint const& b) {
  return std::tie(a.low, a.high) < std::tie(b.low, b.high);
}

bool IsSamePlace(SurfacePoint const& a, SurfacePoint const& b) { return a.low == b.low && a.high == b.high; }

bool IsSameCorner(SurfaceCorner const& a, SurfaceCorner const& b) {
  return a.low == b.low && a.high == b.high;
}

/// Whether it takes an even number of exchanges to bring the four different numbers into ascending order.
bool IsEven(std::array<int, 4> const& numbers) {
  int nExchanges = 0;
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t k = i + 1; k < 4; ++k) nExchanges += numbers[k] < numbers[i] ? 1 : 0;
  return nExchanges % 2 == 0;
}

/// The numbers in ascending order, each once.
void SortOnce(std::vector<SurfacePoint>& points) {
  std::sort(points.begin(), points.end(), ComesBefore);
  points.erase(std::unique(points.begin(), points.end(), IsSamePlace), points.end());
}

/// [1..NNode] where the nodes are.
std::vector<Side> SidesOfNodes(HostPartition& partition, Expression const& body, double length) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<Side> sides(static_cast<std::size_t>(mesh.NNode) + 1, kOutside);
  for (int n = 1; n <= mesh.NNode; ++n) {
    Dual const f = body.ValueAndGradient(mesh.xn[n], mesh.yn[n], mesh.zn[n]);
    if (!std::isfinite(f.value)) {
      throw UsageError("the body " + Quoted(body.text()) + " is not finite at a node at " +
                       Place(mesh.xn[n], mesh.yn[n], mesh.zn[n], PlaceDigits(partition)));
    }
    double const slope = std::sqrt(f.dy * f.dy + f.dx * f.dx + f.dz * f.dz);
    // With a slope of NaN the comparison is false, and the node stays on the side of its sign.
    bool const isOnIt = f.value == 0.0 || std::fabs(f.value) <= kOnSurface * length * slope;
    Side const side = f.value < 0.0 ? kInside : kOutside;
    sides[static_cast<std::size_t>(n)] = isOnIt ? kOnIt : side;
  }
  return sides;
}

/// Finds the points cell by cell.
class SurfaceSearch {
 public:
  SurfaceSearch(HostPartition& partition, Expression const& body, double length)
      : mesh_(*partition.mesh()),
        number_(partition.globalNode()),
        body_(body),
        side_(SidesOfNodes(partition, body, length)) {}

  BodyParts Run() {
    CellFaces faces;
    for (int c = 1; c <= mesh_.NInnerCells; ++c) {
      if (!MayMeet(c)) continue;
      FacesOfCell(mesh_, c, faces);
      VisitCell(c, faces);
    }
    SortOnce(surface_.points);
    return std::move(surface_);
  }

 private:
  std::int64_t Number(int node) const { return number_[static_cast<std::size_t>(node)]; }
  Side SideOf(int node) const { return side_[static_cast<std::size_t>(node)]; }

  /// Whether the cell has nodes on both sides, or one on the surface.
  bool MayMeet(int c) const {
    int const* nodes = mesh_.CellLnods[c] + 1;
    int const n = mesh_.CellLnodsNumber[c];
    return std::any_of(nodes, nodes + n,
                       [&](int node) { return SideOf(node) == kOnIt || SideOf(node) != SideOf(nodes[0]); });
  }

  int Lowest(int const* nodes, int n) const {
    return *std::min_element(nodes, nodes + n, [&](int a, int b) { return Number(a) < Number(b); });
  }

  void VisitCell(int c, CellFaces const& faces) {
    int const* nodes = mesh_.CellLnods[c] + 1;
    int const n = mesh_.CellLnodsNumber[c];
    int const apex = Lowest(nodes, n);
    for (int k = 0; k < n; ++k) {
      if (SideOf(nodes[k]) == kOnIt) AddNode(nodes[k]);
      VisitEdge(apex, nodes[k]);
    }
    for (int f = 0; f < faces.nFaces(); ++f) VisitFace(apex, faces.Face(f), faces.FaceSize(f));
  }

  void VisitFace(int apex, int const* row, int size) {
    int const lowest = Lowest(row, size);
    for (int k = 0; k < size; ++k) {
      int const a = row[k], b = row[(k + 1) % size];
      VisitEdge(a, b);
      VisitEdge(lowest, a);
      // A face with the apex is itself divided by the tetrahedra of the others.
      if (lowest != apex && a != lowest && b != lowest) VisitTetrahedron({apex, lowest, a, b});
    }
  }

  /// @param[in] nodes  the last three turn around a normal that points away from the first
  void VisitTetrahedron(std::array<int, 4> nodes) {
    // In ascending order of the numbers in the mesh, so that every partition makes the same triangles. An exchange of
    // two nodes turns the tetrahedron inside out; one more, of the first two, turns it back.
    bool isEven = true;
    for (std::size_t i = 1; i < 4; ++i) {
      for (std::size_t k = i; k > 0 && Number(nodes[k]) < Number(nodes[k - 1]); --k) {
        std::swap(nodes[k], nodes[k - 1]);
        isEven = !isEven;
      }
    }
    if (!isEven) std::swap(nodes[0], nodes[1]);
    std::array<int, 4> order{};  // inside first
    std::size_t n = 0;
    for (int k = 0; k < 4; ++k)
      if (SideOf(nodes[static_cast<std::size_t>(k)]) == kInside) order[n++] = k;
    std::size_t const nInside = n;
    for (int k = 0; k < 4; ++k)
      if (SideOf(nodes[static_cast<std::size_t>(k)]) != kInside) order[n++] = k;
    if (!IsEven(order)) nInside == 3 ? std::swap(order[0], order[1]) : std::swap(order[2], order[3]);
    int const a = nodes[static_cast<std::size_t>(order[0])], b = nodes[static_cast<std::size_t>(order[1])],
              c = nodes[static_cast<std::size_t>(order[2])], d = nodes[static_cast<std::size_t>(order[3])];
    switch (nInside) {
      case 1:
        AddTriangle(Corner(a, b), Corner(a, c), Corner(a, d));
        break;
      case 2:
        AddTriangle(Corner(a, c), Corner(a, d), Corner(b, d));
        AddTriangle(Corner(a, c), Corner(b, d), Corner(b, c));
        break;
      case 3:
        AddTriangle(Corner(a, d), Corner(b, d), Corner(c, d));
        break;
      default:
        break;
    }
  }

  /// The corner on the edge from a node inside to one that is not.
  SurfaceCorner Corner(int inside, int other) const {
    std::int64_t const a = Number(inside), b = Number(other);
    if (SideOf(other) == kOnIt) return {b, b};
    return {std::min(a, b), std::max(a, b)};
  }

  void AddTriangle(SurfaceCorner const& a, SurfaceCorner const& b, SurfaceCorner const& c) {
    if (!IsSameCorner(a, b) && !IsSameCorner(b, c) && !IsSameCorner(c, a))
      surface_.triangles.push_back({a, b, c});
  }

  void VisitEdge(int a, int b) {
    if (SideOf(a) * SideOf(b) >= 0) return;
    if (Number(b) < Number(a)) std::swap(a, b);
    AddEdge(a, b);
  }

  void AddNode(int n) {
    surface_.points.push_back({Number(n), Number(n), {mesh_.xn[n], mesh_.yn[n], mesh_.zn[n]}});
  }

  /// The point x(t) = a + t (b - a) where the sign of the formula changes, by bisection down to the last bit. Every
  /// cell and rank that has the edge finds the same bits, because `a` is the node with the lower number.
  void AddEdge(int a, int b) {
    double const from[3] = {mesh_.xn[a], mesh_.yn[a], mesh_.zn[a]};
    double const to[3] = {mesh_.xn[b], mesh_.yn[b], mesh_.zn[b]};
    SurfacePoint point = {Number(a), Number(b), {}};
    double low = 0.0, high = 1.0, t = 0.5;
    for (; t > low && t < high; t = 0.5 * (low + high)) {
      for (int k = 0; k < 3; ++k) point.at[k] = from[k] + t * (to[k] - from[k]);
      bool const isInside = body_.Value(point.at[0], point.at[1], point.at[2]) < 0.0;
      (isInside == (SideOf(a) == kInside) ? low : high) = t;
    }
    surface_.points.push_back(point);
  }

  CZYN3DFiniteVolumeMesh const& mesh_;
  std::vector<std::int64_t> const& number_;
  Expression const& body_;
  std::vector<Side> side_;
  BodyParts surface_;
};

/// The triangles of all partitions by their points, in an order that does not depend on the partition; on the first
/// rank.
/// @param[in] points  of all partitions, sorted
std::vector<Triangle> GatherTriangles(Ranks const& ranks, BodyParts const& own,
                                      std::vector<SurfacePoint> const& points) {
  std::vector<std::int64_t> ownCorners;
  for (auto const& triangle : own.triangles)
    for (SurfaceCorner const& corner : triangle)
      ownCorners.insert(ownCorners.end(), {corner.low, corner.high});
  std::vector<std::int64_t> const corners = ranks.GatherOnFirst(ownCorners);
  std::vector<Triangle> triangles(corners.size() / 6);
  for (std::size_t t = 0; t < triangles.size(); ++t) {
    for (std::size_t k = 0; k < 3; ++k) {
      SurfacePoint const wanted = {corners[6 * t + 2 * k], corners[6 * t + 2 * k + 1], {}};
      triangles[t][k] = std::lower_bound(points.begin(), points.end(), wanted, ComesBefore) - points.begin();
    }
    std::rotate(triangles[t].begin(), std::min_element(triangles[t].begin(), triangles[t].end()),
                triangles[t].end());
  }
  std::sort(triangles.begin(), triangles.end());
  return triangles;
}

std::vector<SurfacePoint> GatherPoints(Ranks const& ranks, std::vector<SurfacePoint> const& own) {
  std::vector<std::int64_t> ownNodes;
  std::vector<double> ownPlaces;
  for (SurfacePoint const& point : own) {
    ownNodes.insert(ownNodes.end(), {point.low, point.high});
    ownPlaces.insert(ownPlaces.end(), std::begin(point.at), std::end(point.at));
  }
  std::vector<std::int64_t> const nodes = ranks.GatherOnFirst(ownNodes);
  std::vector<double> const places = ranks.GatherOnFirst(ownPlaces);
  std::vector<SurfacePoint> points(nodes.size() / 2);
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i] = {nodes[2 * i], nodes[2 * i + 1], {places[3 * i], places[3 * i + 1], places[3 * i + 2]}};
  }
  SortOnce(points);
  return points;
}

}  // namespace

BodyParts SurfaceOf(HostPartition& partition, Expression const& body, double length) {
  return SurfaceSearch(partition, body, length).Run();
}

PointSet PointsOnSurface(Ranks const& ranks, HostPartition& partition, Expression const& body, double spacing,
                         double length) {
  BodyParts own;
  ranks.Together([&] { own = SurfaceOf(partition, body, length); });
  std::vector<SurfacePoint> const points = GatherPoints(ranks, own.points);
  std::vector<Triangle> const triangles = GatherTriangles(ranks, own, points);
  PointSet set;
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    if (points.empty())
      throw UsageError("the surface of the body " + Quoted(body.text()) +
                       " does not intersect any cell of the mesh");
    std::vector<Vector3> places;
    places.reserve(points.size());
    for (SurfacePoint const& point : points) places.push_back({point.at[0], point.at[1], point.at[2]});
    set = SurfaceAsPoints(places, triangles, spacing);
  });
  return set;
}

}  // namespace zyngrad

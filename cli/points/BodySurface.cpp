#include "cli/points/BodySurface.h"

#include <algorithm>
#include <boost/geometry/algorithms/disjoint.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/geometry/strategies/strategies.hpp>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/base/UsageError.h"
#include "cli/output/MeshScale.h"
#include "cli/output/RunSettings.h"
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

  std::vector<SurfacePoint> Run() {
    CellFaces faces;
    for (int c = 1; c <= mesh_.NInnerCells; ++c) {
      if (!MayMeet(c)) continue;
      FacesOfCell(mesh_, c, faces);
      VisitCell(c, faces);
    }
    SortOnce(points_);
    return std::move(points_);
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
    for (int f = 0; f < faces.nFaces(); ++f) VisitFace(faces.Face(f), faces.FaceSize(f));
  }

  void VisitFace(int const* row, int size) {
    int const lowest = Lowest(row, size);
    for (int k = 0; k < size; ++k) {
      VisitEdge(row[k], row[(k + 1) % size]);
      VisitEdge(lowest, row[k]);
    }
  }

  void VisitEdge(int a, int b) {
    if (SideOf(a) * SideOf(b) >= 0) return;
    if (Number(b) < Number(a)) std::swap(a, b);
    AddEdge(a, b);
  }

  void AddNode(int n) { points_.push_back({Number(n), Number(n), {mesh_.xn[n], mesh_.yn[n], mesh_.zn[n]}}); }

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
    points_.push_back(point);
  }

  CZYN3DFiniteVolumeMesh const& mesh_;
  std::vector<std::int64_t> const& number_;
  Expression const& body_;
  std::vector<Side> side_;
  std::vector<SurfacePoint> points_;
};

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

std::vector<SurfacePoint> SurfacePointsOf(HostPartition& partition, Expression const& body, double length) {
  return SurfaceSearch(partition, body, length).Run();
}

std::vector<SurfacePoint> Thinned(std::vector<SurfacePoint> const& points, double spacing) {
  namespace index = boost::geometry::index;
  using Point = boost::geometry::model::point<double, 3, boost::geometry::cs::cartesian>;
  using Box = boost::geometry::model::box<Point>;

  if (!(spacing > 0.0)) return points;
  index::rtree<Point, index::quadratic<16>> keptTree;
  std::vector<SurfacePoint> kept;
  for (SurfacePoint const& point : points) {
    double const x = point.at[0], y = point.at[1], z = point.at[2];
    auto const isNear = [&](Point const& other) {
      double const dx = other.get<0>() - x, dy = other.get<1>() - y, dz = other.get<2>() - z;
      return std::sqrt(dy * dy + dx * dx + dz * dz) < spacing;
    };
    Box const around(Point(x - spacing, y - spacing, z - spacing),
                     Point(x + spacing, y + spacing, z + spacing));
    if (keptTree.qbegin(index::intersects(around) && index::satisfies(isNear)) != keptTree.qend()) continue;
    keptTree.insert(Point(x, y, z));
    kept.push_back(point);
  }
  return kept;
}

PointSet PointsOnSurface(Ranks const& ranks, HostPartition& partition, Expression const& body, double spacing,
                         double length) {
  std::vector<SurfacePoint> own;
  ranks.Together([&] { own = SurfacePointsOf(partition, body, length); });
  std::vector<SurfacePoint> const points = GatherPoints(ranks, own);
  PointSet set;
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    if (points.empty())
      throw UsageError("the surface of the body " + Quoted(body.text()) +
                       " does not intersect any cell of the mesh");
    for (SurfacePoint const& point : Thinned(points, spacing)) {
      set.x.push_back(point.at[0]);
      set.y.push_back(point.at[1]);
      set.z.push_back(point.at[2]);
      set.rows.push_back(ShortestText(point.at[0]) + ',' + ShortestText(point.at[1]) + ',' +
                         ShortestText(point.at[2]));
    }
  });
  return set;
}

}  // namespace zyngrad

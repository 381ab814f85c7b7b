#include "cli/bodies/TriangleSurface.h"

#include <algorithm>
#include <cmath>

#include "cli/base/TextTable.h"
#include "cli/bodies/Thinning.h"

namespace zyngrad {
namespace {

double Diagonal(std::vector<Vector3> const& points) {
  Vector3 low = points.front(), high = low;
  for (Vector3 const& point : points) {
    for (std::size_t k = 0; k < 3; ++k) {
      low[k] = std::min(low[k], point[k]);
      high[k] = std::max(high[k], point[k]);
    }
  }
  Vector3 const across = Minus(high, low);
  return std::sqrt(Dot(across, across));
}

std::size_t Index(std::int64_t point) { return static_cast<std::size_t>(point); }

/// "1 edge", "2 edges".
std::string Count(std::int64_t n, std::string const& what) {
  return Grouped(n) + ' ' + what + (n == 1 ? "" : "s");
}

/// An edge with its points in ascending order, and whether its triangle goes along it in that order.
struct Edge {
  std::int64_t low, high;
  int direction;

  bool operator<(Edge const& other) const {
    return low < other.low || (low == other.low && high < other.high);
  }
};

std::vector<Edge> SortedEdges(std::vector<Triangle> const& triangles) {
  std::vector<Edge> edges;
  edges.reserve(3 * triangles.size());
  for (Triangle const& t : triangles) {
    for (std::size_t k = 0; k < 3; ++k) {
      std::int64_t const a = t[k], b = t[(k + 1) % 3];
      edges.push_back({std::min(a, b), std::max(a, b), a < b ? 1 : -1});
    }
  }
  std::sort(edges.begin(), edges.end());
  return edges;
}

void CountEdgeFaults(std::vector<Triangle> const& triangles, SurfaceFaults& faults) {
  std::vector<Edge> const edges = SortedEdges(triangles);
  for (auto at = edges.begin(); at != edges.end();) {
    auto const next = std::upper_bound(at, edges.end(), *at);
    int balance = 0;
    for (auto edge = at; edge != next; ++edge) balance += edge->direction;
    if (next - at == 1) {
      ++faults.nOpen;
    } else if (balance != 0) {
      ++faults.nTurned;
    }
    at = next;
  }
}

}  // namespace

TriangleSurface WeldTriangles(std::vector<double> const& corners) {
  TriangleSurface surface;
  std::vector<Vector3> all;
  all.reserve(corners.size() / 3);
  for (std::size_t i = 0; i + 2 < corners.size(); i += 3)
    all.push_back({corners[i], corners[i + 1], corners[i + 2]});
  if (all.empty()) return surface;
  Thinning const welded = Thin(all, kWeldRange * Diagonal(all));
  for (std::size_t const i : welded.kept) surface.points.push_back(all[i]);
  for (std::size_t i = 0; i + 2 < all.size(); i += 3) {
    Triangle const t = {welded.standsFor[i], welded.standsFor[i + 1], welded.standsFor[i + 2]};
    if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0]) surface.triangles.push_back(t);
  }
  auto const nCollapsed = static_cast<std::int64_t>(all.size() / 3 - surface.triangles.size());
  surface.faults = FaultsOf(surface.points, surface.triangles);
  surface.faults.nCollapsed = nCollapsed;
  if (VolumeOf(surface.points, surface.triangles) < 0.0 && surface.faults.IsClosed()) {
    for (Triangle& t : surface.triangles) std::swap(t[1], t[2]);
    surface.faults.pointedInward = true;
  }
  return surface;
}

SurfaceFaults FaultsOf(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles) {
  SurfaceFaults faults;
  CountEdgeFaults(triangles, faults);
  for (Triangle const& t : triangles) {
    Vector3 const area = AreaVector(points, t);
    if (area[0] == 0.0 && area[1] == 0.0 && area[2] == 0.0) ++faults.nFlat;
  }
  return faults;
}

Vector3 AreaVector(std::vector<Vector3> const& points, Triangle const& t) {
  Vector3 const& a = points[Index(t[0])];
  Vector3 const n = Cross(Minus(points[Index(t[1])], a), Minus(points[Index(t[2])], a));
  return {0.5 * n[0], 0.5 * n[1], 0.5 * n[2]};
}

double AreaOf(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles) {
  double area = 0.0;
  for (Triangle const& t : triangles) {
    Vector3 const n = AreaVector(points, t);
    area += std::sqrt(Dot(n, n));
  }
  return area;
}

double VolumeOf(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles) {
  double volume = 0.0;
  // Cones from a point of the surface, not from the origin, which may be far away.
  for (Triangle const& t : triangles)
    volume += Dot(AreaVector(points, t), Minus(points[Index(t[0])], points.front())) / 3.0;
  return volume;
}

std::vector<std::string> InWords(SurfaceFaults const& faults) {
  std::vector<std::string> lines;
  if (faults.nOpen > 0) {
    lines.push_back("the surface is not closed: " + Count(faults.nOpen, "open edge") +
                    "; a cell counts as inside where the surface covers more than half of all directions");
  }
  if (faults.nTurned > 0) {
    lines.push_back("neighbouring triangles turn in different directions at " +
                    Count(faults.nTurned, "edge") + ": cells and normals there may get the wrong side");
  }
  if (faults.pointedInward) lines.emplace_back("all triangles pointed inward and were turned around");
  if (faults.nCollapsed > 0)
    lines.push_back(Count(faults.nCollapsed, "triangle") + " with two corners at one place left out");
  if (faults.nFlat > 0)
    lines.push_back(Count(faults.nFlat, "triangle") + " without area, which have no normal");
  return lines;
}

}  // namespace zyngrad

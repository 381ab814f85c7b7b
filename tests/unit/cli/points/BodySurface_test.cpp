#include "cli/points/BodySurface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "cli/base/UsageError.h"
#include "cli/bodies/TriangleSurface.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

Expression Sphere() { return Expression("(x-0.52)^2+(y-0.49)^2+(z-0.47)^2-0.1"); }

/// Cells of about a quarter.
constexpr double kLength = 0.25;

constexpr double kPi = 3.14159265358979323846;

TEST(BodySurface, PutsPointsOnASphereInCellsOfAnyShape) {
  Expression const sphere = Sphere();
  for (char const* box : {"box:6,6,6", "box:4,4,4:tet:perturb=0.2,seed=1", "box:5,5,5:prism"}) {
    auto const partition = BoxPartition(box);
    std::vector<SurfacePoint> const points = SurfaceOf(*partition, Sphere(), kLength).points;
    EXPECT_GT(points.size(), 70U) << box;
    // The formula's own rounding at numbers up to 1, over its slope of 0.6.
    for (SurfacePoint const& point : points)
      EXPECT_NEAR(0.0, sphere.Value(point.at[0], point.at[1], point.at[2]), 2e-16) << box;
  }
}

// A plane between two layers of nodes of a 4 x 4 x 4 box cuts 25 edges of cubes along x, the one diagonal of each of the
// 20 + 20 faces that it cuts, and the one space diagonal of each of 16 cubes.
TEST(BodySurface, MeetsEachEdgeOfTheTetrahedraOnce) {
  auto const partition = BoxPartition("box:4,4,4");
  std::vector<SurfacePoint> const points = SurfaceOf(*partition, Expression("x-0.3"), kLength).points;
  EXPECT_EQ(points.size(), 25U + 40U + 16U);
  std::set<std::pair<double, double>> places;
  for (SurfacePoint const& point : points) {
    EXPECT_NEAR(0.3, point.at[0], 1e-16);
    EXPECT_LT(point.low, point.high);
    places.emplace(point.at[1], point.at[2]);
  }
  EXPECT_EQ(places.size(), points.size());
}

TEST(BodySurface, TakesNodesThatLieOnIt) {
  auto const partition = BoxPartition("box:4,4,4");
  // Off by rounding, in both directions, and by less than a millionth of a cell.
  for (char const* plane : {"x-0.5", "0.5-x", "x-0.50000001", "3*(x-0.49999999)"}) {
    std::vector<SurfacePoint> const points = SurfaceOf(*partition, Expression(plane), kLength).points;
    EXPECT_EQ(25U, points.size()) << plane;
    for (SurfacePoint const& point : points) {
      EXPECT_EQ(0.5, point.at[0]) << plane;
      EXPECT_EQ(point.low, point.high) << plane;
    }
  }
}

TEST(BodySurface, IsTheSameInAnyPartition) {
  reference_host::FaceMesh const mesh = BoxWithGroups("box:4,4,4:prism");
  std::vector<int> partOfCell(static_cast<std::size_t>(mesh.nCells));
  for (std::size_t c = 0; c < partOfCell.size(); ++c) partOfCell[c] = static_cast<int>(c * 7 % 3);
  auto const key = [](SurfacePoint const& p) {
    return std::make_tuple(p.low, p.high, p.at[0], p.at[1], p.at[2]);
  };
  using Keys = std::set<decltype(key(SurfacePoint()))>;
  Keys ofParts, ofWhole;
  for (reference_host::MeshPart const& part : SplitMesh(mesh, partOfCell, 3)) {
    reference_host::HostPartition partition(part);
    for (SurfacePoint const& point : SurfaceOf(partition, Sphere(), kLength).points)
      ofParts.insert(key(point));
  }
  auto const whole = BoxPartition("box:4,4,4:prism");
  for (SurfacePoint const& point : SurfaceOf(*whole, Sphere(), kLength).points) ofWhole.insert(key(point));
  EXPECT_EQ(ofParts, ofWhole);
}

/// The places of a surface's points and its triangles.
struct Surface {
  std::vector<Vector3> points;
  std::vector<Triangle> triangles;
};

Surface AllOf(reference_host::HostPartition& partition, Expression const& body) {
  PointSet const set = PointsOnSurface(TestRanks(), partition, body, 0.0, kLength);
  Surface surface;
  for (std::size_t i = 0; i < set.size(); ++i) surface.points.push_back({set.x[i], set.y[i], set.z[i]});
  surface.triangles = set.triangles;
  return surface;
}

TEST(BodySurface, IsClosedAndPointsOutwardInCellsOfAnyShape) {
  for (char const* box :
       {"box:6,6,6", "box:4,4,4:tet:perturb=0.2,seed=1", "box:5,5,5:prism", "box:6,6,6:dual"}) {
    auto const partition = BoxPartition(box);
    Surface const sphere = AllOf(*partition, Sphere());
    SurfaceFaults const faults = FaultsOf(sphere.points, sphere.triangles);
    EXPECT_TRUE(faults.IsClosed()) << box << ' ' << faults.nOpen << ' ' << faults.nTurned;
    EXPECT_EQ(0, faults.nFlat) << box;
    // Euler: points - edges + triangles = 2, and every triangle has three halves of an edge.
    EXPECT_EQ(sphere.triangles.size(), 2 * (sphere.points.size() - 2)) << box;
    double const volume = 4.0 / 3.0 * kPi * std::pow(0.1, 1.5);
    EXPECT_NEAR(1.0, VolumeOf(sphere.points, sphere.triangles) / volume, 0.25) << box;
  }
}

TEST(BodySurface, HasAreaAndVolumeOfSecondOrder) {
  double const area = 4.0 * kPi * 0.1, volume = area * std::sqrt(0.1) / 3.0;
  double areaError[2], volumeError[2];
  for (int level = 0; level < 2; ++level) {
    auto const partition = BoxPartition(level == 0 ? "box:8,8,8" : "box:16,16,16");
    Surface const sphere = AllOf(*partition, Sphere());
    areaError[level] = area - AreaOf(sphere.points, sphere.triangles);
    volumeError[level] = volume - VolumeOf(sphere.points, sphere.triangles);
  }
  EXPECT_GT(volumeError[1], 0.0);  // the triangles lie inside the ball
  EXPECT_GT(volumeError[0] / volumeError[1], 3.0);
  EXPECT_GT(areaError[0] / areaError[1], 3.0);
}

// Where nodes lie on the surface, corners of several edges are one, and triangles collapse.
TEST(BodySurface, IsClosedThroughNodes) {
  auto const partition = BoxPartition("box:4,4,4");
  for (char const* body : {"max(max(abs(x-0.5),abs(y-0.5)),abs(z-0.5))-0.25",
                           "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.0625", "abs(x-0.5)+abs(y-0.5)+abs(z-0.5)-0.25"}) {
    Surface const surface = AllOf(*partition, Expression(body));
    EXPECT_TRUE(FaultsOf(surface.points, surface.triangles).IsClosed()) << body;
    EXPECT_GT(VolumeOf(surface.points, surface.triangles), 0.0) << body;
  }
}

TEST(BodySurface, IsOpenOnlyAtTheBoundaryOfTheMesh) {
  auto const partition = BoxPartition("box:4,4,4:tet");
  Surface const plane = AllOf(*partition, Expression("x+0.1*y-0.4"));
  SurfaceFaults const faults = FaultsOf(plane.points, plane.triangles);
  EXPECT_EQ(0, faults.nTurned);
  EXPECT_GT(faults.nOpen, 16);
  EXPECT_NEAR(std::sqrt(1.01), AreaOf(plane.points, plane.triangles), 1e-14);
  for (Triangle const& t : plane.triangles) EXPECT_GT(AreaVector(plane.points, t)[0], 0.0);
}

TEST(BodySurface, HasTheSameTrianglesInAnyPartition) {
  reference_host::FaceMesh const mesh = BoxWithGroups("box:4,4,4:prism");
  std::vector<int> partOfCell(static_cast<std::size_t>(mesh.nCells));
  for (std::size_t c = 0; c < partOfCell.size(); ++c) partOfCell[c] = static_cast<int>(c * 7 % 3);
  using Corners = std::array<std::int64_t, 6>;
  auto const add = [](std::multiset<Corners>& all, BodyParts const& surface) {
    for (auto const& t : surface.triangles) {
      std::array<std::pair<std::int64_t, std::int64_t>, 3> c;
      for (std::size_t k = 0; k < 3; ++k) c[k] = {t[k].low, t[k].high};
      std::rotate(c.begin(), std::min_element(c.begin(), c.end()), c.end());
      all.insert({c[0].first, c[0].second, c[1].first, c[1].second, c[2].first, c[2].second});
    }
  };
  std::multiset<Corners> ofParts, ofWhole;
  for (reference_host::MeshPart const& part : SplitMesh(mesh, partOfCell, 3)) {
    reference_host::HostPartition partition(part);
    add(ofParts, SurfaceOf(partition, Sphere(), kLength));
  }
  auto const whole = BoxPartition("box:4,4,4:prism");
  add(ofWhole, SurfaceOf(*whole, Sphere(), kLength));
  EXPECT_GT(ofWhole.size(), 50U);
  EXPECT_EQ(ofParts, ofWhole);
}

TEST(BodySurface, GivesPointsAsRowsOfATable) {
  auto const partition = BoxPartition("box:2,2,2");
  PointSet const points = PointsOnSurface(TestRanks(), *partition, Expression("x-0.5"), 0.6, 0.5);
  EXPECT_EQ("x,y,z", points.header);
  ASSERT_EQ(5U, points.size());  // the corners and the middle of the plane
  ASSERT_EQ(5U, points.rows.size());
  EXPECT_EQ("0.5,0,0", points.rows[0]);
}

TEST(BodySurface, MustMeetTheMesh) {
  auto const partition = BoxPartition("box:2,2,2");
  EXPECT_THROW(PointsOnSurface(TestRanks(), *partition, Expression("x-2"), 0.0, 0.5), UsageError);
  EXPECT_THROW(SurfaceOf(*partition, Expression("log(x)"), 0.5), UsageError);
}

}  // namespace
}  // namespace zyngrad

#include "cli/points/BodySurface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

#include "cli/base/UsageError.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

Expression Sphere() { return Expression("(x-0.52)^2+(y-0.49)^2+(z-0.47)^2-0.1"); }

/// Cells of about a quarter.
constexpr double kLength = 0.25;

TEST(BodySurface, PutsPointsOnASphereInCellsOfAnyShape) {
  Expression const sphere = Sphere();
  for (char const* box : {"box:6,6,6", "box:4,4,4:tet:perturb=0.2,seed=1", "box:5,5,5:prism"}) {
    auto const partition = BoxPartition(box);
    std::vector<SurfacePoint> const points = SurfacePointsOf(*partition, Sphere(), kLength);
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
  std::vector<SurfacePoint> const points = SurfacePointsOf(*partition, Expression("x-0.3"), kLength);
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
    std::vector<SurfacePoint> const points = SurfacePointsOf(*partition, Expression(plane), kLength);
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
    for (SurfacePoint const& point : SurfacePointsOf(partition, Sphere(), kLength))
      ofParts.insert(key(point));
  }
  auto const whole = BoxPartition("box:4,4,4:prism");
  for (SurfacePoint const& point : SurfacePointsOf(*whole, Sphere(), kLength)) ofWhole.insert(key(point));
  EXPECT_EQ(ofParts, ofWhole);
}

TEST(BodySurface, IsThinnedToASpacing) {
  auto const partition = BoxPartition("box:6,6,6:tet");
  std::vector<SurfacePoint> const all = SurfacePointsOf(*partition, Sphere(), kLength);
  EXPECT_EQ(Thinned(all, 0.0).size(), all.size());
  EXPECT_EQ(1U, Thinned(all, 10.0).size());

  double const spacing = 0.08;
  auto const distance = [](SurfacePoint const& a, SurfacePoint const& b) {
    return std::hypot(a.at[0] - b.at[0], a.at[1] - b.at[1], a.at[2] - b.at[2]);
  };
  std::vector<SurfacePoint> plain;  // what it says in its comment
  for (SurfacePoint const& point : all) {
    bool isNear = false;
    for (SurfacePoint const& other : plain) isNear = isNear || distance(point, other) < spacing;
    if (!isNear) plain.push_back(point);
  }
  std::vector<SurfacePoint> const thinned = Thinned(all, spacing);
  ASSERT_EQ(thinned.size(), plain.size());
  EXPECT_LT(thinned.size(), all.size());
  for (std::size_t i = 0; i < plain.size(); ++i) {
    EXPECT_EQ(thinned[i].low, plain[i].low);
    EXPECT_EQ(thinned[i].high, plain[i].high);
  }
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
  EXPECT_THROW(SurfacePointsOf(*partition, Expression("log(x)"), 0.5), UsageError);
}

}  // namespace
}  // namespace zyngrad

#include "cli/bodies/Thinning.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/unit/cli/bodies/TestSurfaces.h"

namespace zyngrad {
namespace {

double Distance(Vector3 const& a, Vector3 const& b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

TEST(Thinning, KeepsEachPointThatNoEarlierOneIsCloseTo) {
  std::mt19937 generator(1);
  std::uniform_real_distribution<double> from(0.0, 1.0);
  std::vector<Vector3> points(1000);
  for (Vector3& point : points) point = {from(generator), from(generator), from(generator)};
  double const spacing = 0.08;
  std::vector<std::size_t> plain;  // what it says in its comment
  for (std::size_t i = 0; i < points.size(); ++i) {
    bool isNear = false;
    for (std::size_t const k : plain) isNear = isNear || Distance(points[i], points[k]) < spacing;
    if (!isNear) plain.push_back(i);
  }
  Thinning const thinning = Thin(points, spacing);
  EXPECT_EQ(plain, thinning.kept);
  EXPECT_LT(plain.size(), points.size() * 9 / 10);
  for (std::size_t i = 0; i < points.size(); ++i) {
    double const distance =
        Distance(points[i], points[plain[static_cast<std::size_t>(thinning.standsFor[i])]]);
    for (std::size_t const k : plain) EXPECT_LE(distance, Distance(points[i], points[k]));
  }
}

TEST(Thinning, JoinsEqualPointsWithoutASpacing) {
  Thinning const thinning = Thin({{0, 0, 0}, {1, 0, 0}, {-0.0, 0, 0}, {1, 1e-300, 0}}, 0.0);
  EXPECT_EQ((std::vector<std::size_t>{0, 1, 3}), thinning.kept);
  EXPECT_EQ((std::vector<std::int64_t>{0, 1, 0, 2}), thinning.standsFor);
  EXPECT_EQ(1U, Thin({{0, 0, 0}, {1, 0, 0}}, 10.0).kept.size());
  EXPECT_TRUE(Thin({}, 1.0).kept.empty());
}

TEST(Thinning, LeavesAClosedSurfaceClosed) {
  TriangleSurface const torus = Torus(2.0, 0.5, 60, 30);
  for (double const spacing : {0.12, 0.3, 0.8, 2.0}) {
    Thinning const thinning = Thin(torus.points, spacing);
    std::vector<Vector3> points;
    for (std::size_t const i : thinning.kept) points.push_back(torus.points[i]);
    std::vector<Triangle> const triangles = TrianglesOfKept(thinning, torus.triangles);
    SurfaceFaults const faults = FaultsOf(points, triangles);
    EXPECT_TRUE(faults.IsClosed()) << spacing;
    EXPECT_LT(triangles.size(), torus.triangles.size()) << spacing;
    if (spacing < 0.2) {
      EXPECT_NEAR(1.0, VolumeOf(points, triangles) / VolumeOf(torus.points, torus.triangles), 0.05);
    }
  }
  EXPECT_TRUE(TrianglesOfKept(Thin(torus.points, 10.0), torus.triangles).empty());
}

}  // namespace
}  // namespace zyngrad

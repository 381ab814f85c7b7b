#include "cli/bodies/WindingNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "cli/bodies/StlReader.h"
#include "tests/unit/cli/bodies/TestSurfaces.h"

namespace zyngrad {
namespace {

/// Places in a box around the origin.
std::vector<Vector3> Places(std::size_t n, double x, double y, double z) {
  std::mt19937 generator(1);
  std::uniform_real_distribution<double> from(-1.0, 1.0);
  std::vector<Vector3> places(n);
  for (Vector3& place : places) {
    for (std::size_t k = 0; k < 3; ++k) place[k] = from(generator) * (k == 0 ? x : k == 1 ? y : z);
  }
  return places;
}

/// Signed distance from the round torus.
double FromTorus(Vector3 const& p, double radius, double tube) {
  double const r = std::sqrt(p[0] * p[0] + p[1] * p[1]) - radius;
  return std::sqrt(r * r + p[2] * p[2]) - tube;
}

/// The same without a tree: each triangle is a surface of its own, and a leaf is summed exactly.
double Exact(TriangleSurface const& surface, Vector3 const& place) {
  double sum = 0.0;
  for (Triangle const& t : surface.triangles) {
    Vector3 d[3];
    for (std::size_t i = 0; i < 3; ++i)
      for (std::size_t k = 0; k < 3; ++k)
        d[i][k] = surface.points[static_cast<std::size_t>(t[i])][k] - place[k];
    auto const dot = [&](int i, int j) { return d[i][0] * d[j][0] + d[i][1] * d[j][1] + d[i][2] * d[j][2]; };
    auto const length = [&](int i) { return std::sqrt(dot(i, i)); };
    double const volume = d[0][0] * (d[1][1] * d[2][2] - d[1][2] * d[2][1]) -
                          d[0][1] * (d[1][0] * d[2][2] - d[1][2] * d[2][0]) +
                          d[0][2] * (d[1][0] * d[2][1] - d[1][1] * d[2][0]);
    sum += std::atan2(volume, length(0) * length(1) * length(2) + dot(0, 1) * length(2) +
                                  dot(1, 2) * length(0) + dot(2, 0) * length(1));
  }
  return sum / (2.0 * kTestPi);
}

TEST(WindingNumber, TellsInsideFromOutsideOfATorus) {
  TriangleSurface const torus = Torus(2.0, 0.5, 80, 40);
  WindingNumber const winding(torus.points, torus.triangles);
  int nInside = 0;
  for (Vector3 const& place : Places(20000, 3.0, 3.0, 0.7)) {
    double const distance = FromTorus(place, 2.0, 0.5);
    if (std::fabs(distance) < 0.01) continue;  // between the round torus and its chords
    EXPECT_EQ(distance < 0.0, winding.IsInside(place)) << place[0] << ' ' << place[1] << ' ' << place[2];
    nInside += distance < 0.0 ? 1 : 0;
  }
  EXPECT_GT(nInside, 3000);
}

TEST(WindingNumber, TellsInsideFromOutsideOfWhatGmshWrites) {
  TriangleSurface const torus = WeldTriangles(ReadStl(std::string(ZYN_TEST_DATA) + "/stl/torus_binary.stl"));
  WindingNumber const winding(torus.points, torus.triangles);
  // Between the round torus and its chords, which lie inside or, around the hole, outside.
  for (Vector3 place : Places(5000, 0.4, 0.4, 0.15)) {
    double const distance = FromTorus(place, 0.25, 0.1);
    for (double& x : place) x += 0.5;
    if (distance > 0.015) {
      EXPECT_FALSE(winding.IsInside(place));
    }
    if (distance < -0.015) {
      EXPECT_TRUE(winding.IsInside(place));
    }
  }
}

TEST(WindingNumber, IsNearTheSumOverAllTriangles) {
  for (bool const open : {false, true}) {
    TriangleSurface const ball = Ball(60, 30, open);
    WindingNumber const winding(ball.points, ball.triangles);
    double worst = 0.0;
    for (Vector3 const& place : Places(2000, 1.5, 1.5, 1.5))
      worst = std::max(worst, std::fabs(winding.At(place) - Exact(ball, place)));
    EXPECT_LT(worst, 0.03);
    EXPECT_GT(worst, 1e-6);  // or else the tree is of no use
  }
}

TEST(WindingNumber, DividesAnOpenSurfaceAtItsHole) {
  TriangleSurface const ball = Ball(40, 10, true);  // open below z = -0.95
  WindingNumber const winding(ball.points, ball.triangles);
  for (Vector3 const& place : Places(5000, 1.2, 1.2, 1.2)) {
    double const r = std::sqrt(place[0] * place[0] + place[1] * place[1] + place[2] * place[2]);
    if (r < 0.9 && place[2] > -0.8) {
      EXPECT_TRUE(winding.IsInside(place));
    }
    if (r > 1.0) {
      EXPECT_FALSE(winding.IsInside(place));
    }
  }
}

TEST(WindingNumber, CountsOverlappingBodiesAsOneAndCavitiesAsOutside) {
  TriangleSurface const ball = Ball(20, 10);
  std::vector<double> corners = CornersOf(ball);
  for (double const x : CornersOf(ball)) corners.push_back(0.7 * x);  // the same way round: winds twice
  TriangleSurface const twice = WeldTriangles(corners);
  EXPECT_NEAR(2.0, WindingNumber(twice.points, twice.triangles).At({0, 0, 0}), 0.03);
  EXPECT_TRUE(WindingNumber(twice.points, twice.triangles).IsInside({0, 0, 0}));

  TriangleSurface cavity = twice;
  for (std::size_t t = ball.triangles.size(); t < cavity.triangles.size(); ++t)
    std::swap(cavity.triangles[t][0], cavity.triangles[t][1]);
  WindingNumber const hollow(cavity.points, cavity.triangles);
  EXPECT_FALSE(hollow.IsInside({0, 0, 0}));
  EXPECT_TRUE(hollow.IsInside({0.8, 0.1, 0.1}));
}

// The faces of a cube lie where cell centres may lie.
TEST(WindingNumber, CountsThePlacesOnTheSurfaceAsOutside) {
  std::vector<Vector3> const points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0},
                                       {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}};
  std::vector<Triangle> const triangles = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                                           {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
  EXPECT_DOUBLE_EQ(1.0, VolumeOf(points, triangles));
  WindingNumber const winding(points, triangles);
  for (double const u : {0.25, 0.5, 0.625}) {
    for (double const w : {0.0, 1.0}) {
      for (Vector3 const& place : {Vector3{u, 0.3, w}, Vector3{0.3, w, u}, Vector3{w, u, 0.3}})
        EXPECT_FALSE(winding.IsInside(place)) << place[0] << ' ' << place[1] << ' ' << place[2];
    }
    EXPECT_TRUE(winding.IsInside({u, 0.5, 1e-6}));
  }
}

TEST(WindingNumber, IsZeroWithoutTrianglesAndFiniteAtACorner) {
  EXPECT_EQ(0.0, WindingNumber({}, {}).At({0, 0, 0}));
  EXPECT_FALSE(WindingNumber({}, {}).IsInside({0, 0, 0}));
  // All triangles at one place, which no plane divides.
  std::vector<Triangle> const same(100, Triangle{0, 1, 2});
  WindingNumber const winding({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, same);
  EXPECT_TRUE(std::isfinite(winding.At({0, 0, 0})));
  EXPECT_NEAR(-50.0, winding.At({0.2, 0.2, 1e-9}), 1e-3);
}

}  // namespace
}  // namespace zyngrad

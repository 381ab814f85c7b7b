#include "reference_host/partition/BoundaryVectors.h"

#include <gtest/gtest.h>

#include <cmath>

#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

constexpr double kRounding = 4e-16;

void ExpectNear(Point const& a, Point const& b) {
  for (std::size_t d = 0; d < 3; ++d)
    EXPECT_NEAR(a[d], b[d], kRounding * (1.0 + Length(b))) << "component " << d;
}

TEST(BoundaryVectors, WithoutNormalPartLeavesTheVectorInThePlane) {
  ExpectNear(WithoutNormalPart({1.0, 2.0, 3.0}, {0.0, 0.0, 1.0}), {1.0, 2.0, 0.0});
  Point const n = {0.6, 0.0, 0.8};
  Point const v = WithoutNormalPart({5.0, 7.0, -1.0}, n);
  EXPECT_NEAR(Dot(v, n), 0.0, 1e-15);
  ExpectNear(Sum(v, Scaled(5.0 * 0.6 - 0.8, n)), {5.0, 7.0, -1.0});
}

// A wedge about the x axis with the middle plane z = 0. On the side with the outward normal (0, -sin a, cos a), the
// radial direction is (0, cos a, sin a).
TEST(BoundaryVectors, TurnedToSideKeepsRadialSwirlingAndAxialParts) {
  for (double const a : {0.04, -0.04, 0.5}) {
    double const sign = a < 0.0 ? -1.0 : 1.0;
    Point const n = {0.0, -sign * std::sin(a), sign * std::cos(a)};
    ExpectNear(TurnedToSide({0.0, 1.0, 0.0}, n), {0.0, std::cos(a), std::sin(a)});
    ExpectNear(TurnedToSide({0.0, 0.0, 1.0}, n), {0.0, -std::sin(a), std::cos(a)});
    ExpectNear(TurnedToSide({1.0, 0.0, 0.0}, n), {1.0, 0.0, 0.0});
  }
}

TEST(BoundaryVectors, TurnedToSideLeavesVectorsAsTheyAreOnASideAlongTheAxes) {
  for (std::size_t d = 0; d < 3; ++d) {
    for (double const sign : {1.0, -1.0}) {
      Point n = {0.0, 0.0, 0.0};
      n[d] = sign;
      EXPECT_EQ(TurnedToSide({3.0, -4.0, 5.0}, n), (Point{3.0, -4.0, 5.0}));
    }
  }
}

}  // namespace
}  // namespace reference_host

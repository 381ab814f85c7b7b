#include "reference_host/mesh/FaceGeometry.h"

#include <gtest/gtest.h>

#include <numeric>

#include "reference_host/mesh/Vector3.h"
#include "tests/unit/reference_host/mesh/ExpectPoint.h"

namespace reference_host {
namespace {

FaceGeometry GeometryOf(std::vector<Point> const& points) {
  std::vector<int> nodes(points.size());
  std::iota(nodes.begin(), nodes.end(), 0);
  return ComputeFaceGeometry(points, nodes.data(), static_cast<int>(nodes.size()));
}

TEST(FaceGeometry, TriangleHasHalfTheCrossProductAndTheMeanOfItsCorners) {
  FaceGeometry const face = GeometryOf({{1, 0, 0}, {4, 0, 0}, {1, 6, 3}});
  ExpectPoint(face.area, {0, -4.5, 9}, 0);
  ExpectPoint(face.centre, {2, 2, 1}, 1e-15);
}

TEST(FaceGeometry, AreaVectorFollowsTheRightHandRule) {
  ExpectPoint(GeometryOf({{0, 0, 0}, {2, 0, 0}, {2, 3, 0}, {0, 3, 0}}).area, {0, 0, 6}, 0);
  ExpectPoint(GeometryOf({{0, 3, 0}, {2, 3, 0}, {2, 0, 0}, {0, 0, 0}}).area, {0, 0, -6}, 0);
}

TEST(FaceGeometry, PlaneFaceHasItsCentroidNotTheMeanOfItsNodes) {
  // Trapezium with parallel sides 4 and 2 at height 0 and 3: the centroid is at 3/3 (4 + 2*2)/(4 + 2) = 4/3.
  FaceGeometry const face = GeometryOf({{0, 0, 7}, {4, 0, 7}, {3, 3, 7}, {1, 3, 7}});
  ExpectPoint(face.area, {0, 0, 9}, 1e-14);
  ExpectPoint(face.centre, {2, 4.0 / 3, 7}, 1e-14);
}

TEST(FaceGeometry, NodeOnAnEdgeChangesNothing) {
  FaceGeometry const face = GeometryOf({{0, 0, 0}, {1, 0, 0}, {4, 0, 0}, {3, 3, 0}, {1, 3, 0}});
  ExpectPoint(face.area, {0, 0, 9}, 1e-14);
  ExpectPoint(face.centre, {2, 4.0 / 3, 0}, 1e-14);
}

TEST(FaceGeometry, WarpedFaceIsWeightedByTheAreaProjectedOnTheWhole) {
  // Saddle: corners at heights +1 and -1 in turn. By symmetry S = (0, 0, 4) and the centre is the origin.
  FaceGeometry const saddle = GeometryOf({{1, 1, 1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, -1}});
  ExpectPoint(saddle.area, {0, 0, 4}, 0);
  ExpectPoint(saddle.centre, {0, 0, 0}, 0);

  // One corner of a square lifted by 4: apex (1, 1, 1), triangles below with S_t = e x eNext / 2.
  //   e: (-1,-1,-1), (1,-1,-1), (1,1,3), (-1,1,-1)
  //   S_t: (0,-1,1), (-1,-2,1), (-2,-1,1), (-1,0,1)   sum S = (-4, -4, 4), S.S = 48
  //   S_t.S: 8, 16, 16, 8;   r_t: (0,-2,-2)/3, (2,0,2)/3, (0,2,2)/3, (-2,0,-2)/3
  //   sum of r_t S_t.S = (16, 16, 32)/3, so the centre is the apex + (1/9, 1/9, 2/9).
  FaceGeometry const lifted = GeometryOf({{0, 0, 0}, {2, 0, 0}, {2, 2, 4}, {0, 2, 0}});
  ExpectPoint(lifted.area, {-4, -4, 4}, 0);
  ExpectPoint(lifted.centre, {1 + 1.0 / 9, 1 + 1.0 / 9, 1 + 2.0 / 9}, 1e-15);
}

TEST(FaceGeometry, MovesWithAWarpedFaceFarFromTheOrigin) {
  std::vector<Point> const near = {{0, 0, 0}, {0.5, 0.125, 0}, {0.5, 0.625, 0.25}, {0.125, 0.5, -0.125}};
  std::vector<Point> far = near;
  for (Point& point : far)
    point = Sum(point, {1024, -2048, 4096});  // exact: all numbers are multiples of 1/8
  FaceGeometry const a = GeometryOf(near);
  FaceGeometry const b = GeometryOf(far);
  ExpectPoint(b.area, a.area, 0);
  ExpectPoint(Difference(b.centre, {1024, -2048, 4096}), a.centre, 1e-12);  // one rounding at 4096
}

TEST(FaceGeometry, TurnedFaceHasTheOppositeVectorAndTheSameCentre) {
  FaceGeometry const a = GeometryOf({{0, 0, 0}, {2, 0, 0.5}, {2, 2, 1}, {1, 3, 0}, {0, 2, 0}});
  FaceGeometry const b = GeometryOf({{0, 2, 0}, {1, 3, 0}, {2, 2, 1}, {2, 0, 0.5}, {0, 0, 0}});
  ExpectPoint(b.area, Scaled(-1, a.area), 1e-15);
  ExpectPoint(b.centre, a.centre, 1e-15);
}

TEST(FaceGeometry, FaceWithoutAreaKeepsAFiniteCentre) {
  FaceGeometry const face = GeometryOf({{0, 0, 0}, {1, 0, 0}, {3, 0, 0}, {4, 0, 0}});
  ExpectPoint(face.area, {0, 0, 0}, 0);
  ExpectPoint(face.centre, {2, 0, 0}, 0);
}

TEST(BestSpanningTriple, PassesOverNodesInALine) {
  std::vector<Point> const points = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
  int const nodes[] = {0, 1, 2, 3, 4};
  // Triples from 0: area 0; 1: 2; 2: 4, the first of the largest; 3: 4; 4: 2.
  EXPECT_EQ(2, BestSpanningTriple(points, nodes, 5, {0, 0, 4}));
}

TEST(BestSpanningTriple, PassesOverAReentrantCorner) {
  //   2 +-------+ 1      The triple around corner 3 is large, but turns against the face.
  //      \     /
  //     3 +   /
  //      /   /
  //   4 +---+ 0
  std::vector<Point> const points = {{3, 0, 0}, {4, 4, 0}, {0, 4, 0}, {2, 2, 0}, {0, 0, 0}};
  int const nodes[] = {0, 1, 2, 3, 4};
  Point const area = ComputeFaceGeometry(points, nodes, 5).area;
  int const best = BestSpanningTriple(points, nodes, 5, area);
  EXPECT_EQ(0, best);  // (1,4) x (-3,4) = 16; the others: 8, -8, 6, 12
}

}  // namespace
}  // namespace reference_host

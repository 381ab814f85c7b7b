#include "cli/bodies/TriangleSurface.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "cli/bodies/StlReader.h"
#include "tests/unit/cli/bodies/TestSurfaces.h"

namespace zyngrad {
namespace {

TEST(TriangleSurface, SharesCornersAtOnePlace) {
  TriangleSurface const torus = Torus(2.0, 0.5, 12, 8);
  TriangleSurface const welded = WeldTriangles(CornersOf(torus));
  EXPECT_EQ(torus.points.size(), welded.points.size());
  EXPECT_EQ(torus.triangles.size(), welded.triangles.size());
  EXPECT_TRUE(welded.faults.IsClosed());
  EXPECT_TRUE(InWords(welded.faults).empty());
  EXPECT_DOUBLE_EQ(VolumeOf(torus.points, torus.triangles), VolumeOf(welded.points, welded.triangles));
}

TEST(TriangleSurface, SharesCornersThatDifferByTheLastDigitsWritten) {
  std::vector<double> corners = CornersOf(Torus(2.0, 0.5, 12, 8));
  for (std::size_t i = 0; i < corners.size(); ++i) corners[i] += i % 2 == 0 ? 4e-7 : -4e-7;
  EXPECT_EQ(12U * 8U, WeldTriangles(corners).points.size());
  for (std::size_t i = 0; i < corners.size(); ++i) corners[i] += i % 7 == 0 ? 4e-3 : 0.0;
  EXPECT_FALSE(WeldTriangles(corners).faults.IsClosed());
}

TEST(TriangleSurface, IsTheTorusThatGmshMade) {
  for (char const* name : {"torus.stl", "torus_binary.stl"}) {
    TriangleSurface const torus = WeldTriangles(ReadStl(std::string(ZYN_TEST_DATA) + "/stl/" + name));
    EXPECT_TRUE(torus.faults.IsClosed()) << name;
    // Euler: a torus has as many points and triangles as edges, of which every triangle has three halves.
    EXPECT_EQ(torus.triangles.size(), 2 * torus.points.size()) << name;
    double const area = 4.0 * kTestPi * kTestPi * 0.25 * 0.1, volume = 2.0 * kTestPi * kTestPi * 0.25 * 0.01;
    // Chords of 0.08 on a circle of radius 0.1 leave out 4 % of its length.
    EXPECT_NEAR(1.0, AreaOf(torus.points, torus.triangles) / area, 0.08) << name;
    EXPECT_NEAR(1.0, VolumeOf(torus.points, torus.triangles) / volume, 0.15) << name;
  }
}

TEST(TriangleSurface, TurnsOutwardWhatPointsInward) {
  TriangleSurface torus = Torus(2.0, 0.5, 12, 8);
  double const volume = VolumeOf(torus.points, torus.triangles);
  ASSERT_GT(volume, 0.0);
  for (Triangle& t : torus.triangles) std::swap(t[0], t[1]);
  TriangleSurface const turned = WeldTriangles(CornersOf(torus));
  EXPECT_TRUE(turned.faults.pointedInward);
  EXPECT_DOUBLE_EQ(volume, VolumeOf(turned.points, turned.triangles));
  EXPECT_EQ("all triangles pointed inward and were turned around", InWords(turned.faults).front());
}

TEST(TriangleSurface, CountsOpenEdgesTurnedNeighboursAndTrianglesWithoutArea) {
  TriangleSurface const open = WeldTriangles(CornersOf(Ball(7, 6, true)));
  EXPECT_EQ(7, open.faults.nOpen);
  EXPECT_EQ(0, open.faults.nTurned);
  EXPECT_EQ(0U, InWords(open.faults).front().find("the surface is not closed: 7 open edges"));

  TriangleSurface oneTurned = Ball(7, 6);
  std::swap(oneTurned.triangles[20][0], oneTurned.triangles[20][1]);
  SurfaceFaults const turned = WeldTriangles(CornersOf(oneTurned)).faults;
  EXPECT_EQ(0, turned.nOpen);
  EXPECT_EQ(3, turned.nTurned);

  // Corners 0, 0 and 1 collapse; the middle of an edge has no area, but is a corner of its neighbours.
  SurfaceFaults const flat =
      WeldTriangles({0, 0, 0, 0, 0, 0, 1, 0, 0, /**/ 0, 0, 0, 1, 0, 0, 2, 0, 0}).faults;
  EXPECT_EQ(1, flat.nCollapsed);
  EXPECT_EQ(1, flat.nFlat);
}

TEST(TriangleSurface, AreaAndVolumeDoNotDependOnTheOrigin) {
  TriangleSurface torus = Torus(2.0, 0.5, 40, 30);
  double const volume = VolumeOf(torus.points, torus.triangles), area = AreaOf(torus.points, torus.triangles);
  for (auto& point : torus.points) point[0] += 1e6;
  EXPECT_NEAR(volume, VolumeOf(torus.points, torus.triangles), 1e-8 * volume);  // places have 10 digits left
  EXPECT_NEAR(area, AreaOf(torus.points, torus.triangles), 1e-8 * area);
  EXPECT_EQ(0.0, VolumeOf({}, {}));
}

}  // namespace
}  // namespace zyngrad

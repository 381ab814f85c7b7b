#include "cli/points/UsableCells.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "cli/base/UsageError.h"
#include "cli/bodies/StlReader.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

TEST(UsableCells, AreAllCellsButGhostsWithoutABody) {
  auto const partition = BoxPartition("box:3,3,3");
  UsableCells const usable = FindUsableCells(TestRanks(), *partition, nullptr);
  EXPECT_EQ(27, usable.nCells);
  for (int c = 1; c <= partition->mesh()->NCell; ++c)
    EXPECT_EQ(usable.Contains(c), c <= partition->mesh()->NInnerCells) << c;
}

TEST(UsableCells, LieOutsideTheBodyWithTheirCentres) {
  auto const partition = BoxPartition("box:4,4,4");
  Expression const half("x-0.5"),
      touching("x-0.375");  // the second passes through centres, which are not inside
  UsableCells const usable = FindUsableCells(TestRanks(), *partition, &half);
  EXPECT_EQ(32, usable.nCells);
  for (int c = 1; c <= 64; ++c) EXPECT_EQ(usable.Contains(c), partition->mesh()->xc[c] > 0.5);
  EXPECT_EQ(48, FindUsableCells(TestRanks(), *partition, &touching).nCells);
}

TEST(UsableCells, MustBeThere) {
  auto const partition = BoxPartition("box:2,2,2");
  Expression const all("-1"), broken("log(x-0.5)");
  EXPECT_THROW(FindUsableCells(TestRanks(), *partition, &all), UsageError);
  EXPECT_THROW(FindUsableCells(TestRanks(), *partition, &broken), UsageError);
}

TEST(UsableCells, GiveEachPointTheDistanceToTheNearest) {
  auto const partition = BoxPartition("box:5,5,5:tet:perturb=0.2,seed=4");
  Expression const ball("(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1");
  UsableCells const usable = FindUsableCells(TestRanks(), *partition, &ball);
  CZYN3DFiniteVolumeMesh const& mesh = *partition->mesh();

  std::mt19937 random(5);
  std::uniform_real_distribution<double> coordinate(-0.5, 1.5);
  PointSet points;
  for (int i = 0; i < 200; ++i) {
    points.x.push_back(coordinate(random));
    points.y.push_back(coordinate(random));
    points.z.push_back(coordinate(random));
  }
  std::vector<PointOwner> const owners = FindPointOwners(TestRanks(), *partition, usable, points);
  ASSERT_EQ(200U, owners.size());
  for (std::size_t i = 0; i < owners.size(); ++i) {
    double nearest = std::numeric_limits<double>::infinity();
    for (int c = 1; c <= mesh.NInnerCells; ++c) {
      if (!usable.Contains(c)) continue;
      nearest = std::min(
          nearest, std::hypot(points.x[i] - mesh.xc[c], points.y[i] - mesh.yc[c], points.z[i] - mesh.zc[c]));
    }
    EXPECT_DOUBLE_EQ(owners[i].distance, nearest);
    EXPECT_EQ(0, owners[i].rank);
  }
}

TEST(UsableCells, LeaveOutThoseInsideTriangles) {
  auto const partition = BoxPartition("box:6,6,6");
  TriangleSurface torus = WeldTriangles(ReadStl(std::string(ZYN_TEST_DATA) + "/stl/torus.stl"));
  WindingNumber const winding(torus.points, torus.triangles);
  Expression const round("(sqrt((x-0.5)^2+(y-0.5)^2)-0.25)^2+(z-0.5)^2-0.01");
  UsableCells const byFile = FindUsableCells(TestRanks(), *partition, winding, "torus.stl");
  UsableCells const byFormula = FindUsableCells(TestRanks(), *partition, &round);
  EXPECT_EQ(byFormula.nCells, byFile.nCells);
  EXPECT_LT(byFile.nCells, 216);
  EXPECT_EQ(byFormula.mark, byFile.mark);

  std::vector<Vector3> huge = torus.points;
  auto const cell = BoxPartition("box:1,1,1");
  for (Vector3& at : huge) at[0] += 0.25;  // the tube around the only centre
  EXPECT_THROW(FindUsableCells(TestRanks(), *cell, WindingNumber(huge, torus.triangles), "torus.stl"),
               UsageError);
}

}  // namespace
}  // namespace zyngrad

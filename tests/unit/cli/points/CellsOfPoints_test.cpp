#include "cli/points/CellsOfPoints.h"

#include <gtest/gtest.h>

#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

TEST(CellsOfPoints, TellWhatLiesOutsideAMeshOfAnyCells) {
  for (char const* box : {"box:4,4,4", "box:3,3,3:tet:perturb=0.3,seed=1", "box:4,4,4:prism",
                          "box:4,4,4:dual", "box:5,5,5:hex:perturb=0.4,seed=2"}) {
    auto const partition = BoxPartition(box);
    PointSet points;
    for (double const x : {-0.01, 0.0, 0.013, 0.25, 0.377, 0.5, 0.861, 1.0, 1.01}) {
      for (double const y : {-0.01, 0.0, 0.218, 0.75, 1.0}) {
        for (double const z : {0.0, 0.111, 0.5, 1.0, 1.01}) {
          points.x.push_back(x);
          points.y.push_back(y);
          points.z.push_back(z);
        }
      }
    }
    std::vector<double> const ratios = AspectRatiosAt(TestRanks(), *partition, points);
    for (std::size_t i = 0; i < points.size(); ++i) {
      bool isInside = true;
      for (double const at : {points.x[i], points.y[i], points.z[i]})
        isInside = isInside && at >= 0.0 && at <= 1.0;
      EXPECT_EQ(isInside, ratios[i] > 0.0)
          << box << ' ' << points.x[i] << ' ' << points.y[i] << ' ' << points.z[i];
    }
  }
  auto const partition = BoxPartition("box:2,2,2");
  EXPECT_TRUE(AspectRatiosAt(TestRanks(), *partition, {}).empty());
}

TEST(CellsOfPoints, FindCubesAndTetrahedraNotFlat) {
  struct Case {
    char const* box;
    double most;
  };
  for (Case const& one :
       {Case{"box:6,6,6", 1.7}, Case{"box:5,5,5:tet", 2.9}, Case{"box:5,5,5:prism", 2.9},
        Case{"box:6,6,6:hex:perturb=0.2,seed=1", 2.9}, Case{"box:5,5,5:tet:perturb=0.2,seed=1", 2.9}}) {
    auto const partition = BoxPartition(one.box);
    for (int c = 1; c <= partition->mesh()->NInnerCells; ++c) {
      EXPECT_GE(AspectRatioOf(*partition, c), 1.0) << one.box;
      EXPECT_LT(AspectRatioOf(*partition, c), one.most) << one.box << ", cell " << c;
    }
  }
}

TEST(CellsOfPoints, MeasureWidthOverThickness) {
  auto const partition = BoxPartition("box:5,5,5");
  CZYN3DFiniteVolumeMesh& mesh = *partition->mesh();
  for (int n = 1; n <= mesh.NNode; ++n) mesh.zn[n] *= 0.1;
  for (int c = 1; c <= mesh.NCell; ++c) mesh.zc[c] *= 0.1;
  int const inner = 1 + 2 + 5 * (2 + 5 * 2), corner = 1;
  EXPECT_NEAR(10.0, AspectRatioOf(*partition, inner), 1e-9);
  EXPECT_NEAR(10.0, AspectRatioOf(*partition, corner), 1e-9);
  PointSet points;
  points.x = points.y = {0.5};
  points.z = {0.05};
  EXPECT_NEAR(10.0, AspectRatiosAt(TestRanks(), *partition, points).front(), 1e-9);
}

TEST(CellsOfPoints, DoNotCountTheDirectionAcrossALayer) {
  auto const layer = BoxPartition("box:7,7,1");
  EXPECT_NEAR(1.0, AspectRatioOf(*layer, 1 + 3 + 7 * 3), 1e-9);
  auto const row = BoxPartition("box:7,1,1");
  EXPECT_EQ(1.0, AspectRatioOf(*row, 4));
  auto const alone = BoxPartition("box:1,1,1");
  EXPECT_EQ(1.0, AspectRatioOf(*alone, 1));
}

}  // namespace
}  // namespace zyngrad

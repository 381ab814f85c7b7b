#include <gtest/gtest.h>

#include <cmath>

#include "host/ZYNOptKer.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/watch/SettingsFolder.h"

// How far the growing cube of the cell operator's point search goes if it never finds enough: until it covers
// the points of all cells and their centres, in every direction.

namespace zyn_test::point_bounds_test {
namespace {

using Array = GuardedArray<double>;

/// Two cells at a distance of 1, and a ghost cell with its face.
TestMesh WithGhost(Point face, Point ghost) {
  TestMesh mesh;
  mesh.AddInteriorCell({0, 0, 0});
  mesh.AddInteriorCell({1, 0, 0});
  mesh.JoinInterior(1, 2);
  mesh.AddSide(kWall, 1, face, ghost);
  return mesh;
}

/// The half-width at which the search around (0, 0, 0) ends with too few.
double WidthThatCoversAll(TestMesh const& mesh) {
  CellBed bed(mesh);
  Array realBlock(4), x(1, 0.0), support(1, -7.5);
  GuardedArray<int> intBlock(4);
  bed.object->m_pGV->ResetRealBlock = realBlock.Data();
  bed.object->m_pGV->ResetIntBlock = intBlock.Data();
  CZYNOptKer tree;
  tree.SetADTreeRange(9, 9, 9, -9, -9, -9, 1, 10000, 200000);
  tree.AddSurfaceToADTree(1, 0, 0, 0, 0, 0, 0);
  int cellOfBlock[] = {0, 1};
  Printed([&] {
    bed.object->Initialize_IBInterpolateData(nullptr, 1, nullptr, nullptr, nullptr, 2, -1.0, 2);
    bed.object->SearchIBADTress(x.Data(), nullptr, nullptr, 2, -1.0, 2, cellOfBlock, tree, support.Data());
  });
  return support[1];
}

TEST(CellPointBounds, ReachAsFarAsTheNearCells) {
  EXPECT_EQ(1.0, WidthThatCoversAll(WithGhost({0.5, 0.5, 0.5}, {-0.5, -0.5, -0.5})));
}

TEST(CellPointBounds, ReachTheFacesOfGhostCellsOnEveryAxis) {
  for (double const far : {6.0, -6.0}) {
    EXPECT_EQ(6.0, WidthThatCoversAll(WithGhost({far, 0, 0}, {0, 0, 0})));
    EXPECT_EQ(6.0, WidthThatCoversAll(WithGhost({0, far, 0}, {0, 0, 0})));
    EXPECT_EQ(6.0, WidthThatCoversAll(WithGhost({0, 0, far}, {0, 0, 0})));
  }
}

TEST(CellPointBounds, ReachTheCentresOfGhostCellsOnEveryAxis) {
  for (double const far : {6.0, -6.0}) {
    EXPECT_EQ(6.0, WidthThatCoversAll(WithGhost({0, 0, 0}, {far, 0, 0})));
    EXPECT_EQ(6.0, WidthThatCoversAll(WithGhost({0, 0, 0}, {0, far, 0})));
    EXPECT_EQ(6.0, WidthThatCoversAll(WithGhost({0, 0, 0}, {0, 0, far})));
  }
}

}  // namespace
}  // namespace zyn_test::point_bounds_test

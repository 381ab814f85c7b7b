#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "host/ZYNOptKer.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/tree/RecordingTree.h"
#include "tests/support/watch/SettingsFolder.h"

// Which calls the cell operator's point methods make of the search tree, and how often they destroy it.

namespace zyn_test {
namespace {

using Array = GuardedArray<double>;
using List = std::vector<int>;

Corners Cube(double x, double d) { return {x - d, x - d, x - d, x + d, x + d, x + d}; }

/// Two interior cells at a distance of 2 along y, an inlet beside them and an outlet far away.
TestMesh SomeMesh(double outletGhostX = 90.0) {
  TestMesh mesh;
  mesh.AddInteriorCell({1, 2, 3});
  mesh.AddInteriorCell({1, 4, 3});
  mesh.JoinInterior(1, 2);
  mesh.AddSide(kInlet, 1, {0, 2, 3}, {-1, 2, 3});
  mesh.AddSide(kOutlet, 2, {80, 4, 3}, {outletGhostX, 4, 3});
  return mesh;
}

struct PointBed : CellBed {
  explicit PointBed(TestMesh const& mesh = SomeMesh()) : CellBed(mesh), realBlock(4), intBlock(4) {
    object->m_pGV->ResetRealBlock = realBlock.Data();
    object->m_pGV->ResetIntBlock = intBlock.Data();
    StartAnewWithoutAnswers();
  }
  void Initialize(int nPoint) {
    Printed(
        [&] { object->Initialize_IBInterpolateData(nullptr, nPoint, nullptr, nullptr, nullptr, 2, 1.0, 1); });
  }
  /// Searches for points at the given x with a tree of the caller's.
  void Search(std::vector<double> const& xs, int method, double distance, int number) {
    int const n = static_cast<int>(xs.size());
    Initialize(n);
    Calls().queries.clear();
    Array x(n), support(n);
    for (int i = 1; i <= n; ++i) x[i] = xs[static_cast<std::size_t>(i - 1)];
    int cellOfBlock[] = {0, 2, 1, 4, 3};
    object->SearchIBADTress(x.Data(), nullptr, nullptr, method, distance, number, cellOfBlock, tree,
                            support.Data());
    supports.assign(support.Data() + 1, support.Data() + 1 + n);
  }
  List Stencil(int i) const {
    int const* const row = object->m_ppIBConn[i];
    return List(row + 1, row + 1 + row[0]);
  }

  Array realBlock;
  GuardedArray<int> intBlock;
  CZYNOptKer tree;
  std::vector<double> supports;
};

TEST(CellPointTreeCalls, OfTheSetUpSetTheRangeAndAddNothing) {
  PointBed bed;
  bed.Initialize(2);
  ASSERT_EQ(1U, Calls().ranges.size());
  EXPECT_EQ((std::array<double, 9>{1, 4, 3, 0, 2, 3, 1, 10000, 200000}), Calls().ranges[0].arguments);
  EXPECT_TRUE(Calls().boxes.empty());
  EXPECT_TRUE(Calls().queries.empty());
}

TEST(CellPointTreeCalls, OfTheSetUpDestroyTheLocalTreeAndTheCopyHandedOn) {
  PointBed bed;
  bed.Initialize(2);
  EXPECT_EQ(1, Calls().constructed);
  EXPECT_EQ(2, Calls().destroyed);
  EXPECT_EQ(nullptr, bed.object->m_pADTree);
}

TEST(CellPointTreeCalls, OfTheSearchDestroyTheCopyThatWasHandedOver) {
  PointBed bed;
  bed.Search({1.0}, 1, 0.5, 0);
  EXPECT_EQ(1, Calls().constructed);
  EXPECT_EQ(3, Calls().destroyed) << "two of the set-up and the search's copy";
}

TEST(CellPointCubes, OfMethod1AreOnePerPointAroundXOnAllAxes) {
  PointBed bed;
  Calls().answer = [](Corners const&) { return List{3, 1}; };
  bed.Search({1.25, -4.0}, 1, 0.5, 1000);
  ASSERT_EQ(2U, Calls().queries.size());
  EXPECT_EQ(Cube(1.25, 0.5), Calls().queries[0].corners) << "low corner first";
  EXPECT_EQ(Cube(-4.0, 0.5), Calls().queries[1].corners);
  EXPECT_EQ(0, Calls().queries[0].last);
  EXPECT_EQ((List{4, 2}), bed.Stencil(1)) << "in the tree's order, through the map";
  EXPECT_EQ((std::vector<double>{0.5, 0.5}), bed.supports);
}

TEST(CellPointCubes, OfMethod2GrowByTheMeanDistance) {
  PointBed bed;
  Calls().answer = [](Corners const& c) { return c[3] - c[0] > 11.0 ? List{2, 4, 1, 3} : List{2}; };
  bed.Search({40.0}, 2, 0.25, 2);
  ASSERT_EQ(3U, Calls().queries.size());
  for (std::size_t k = 0; k < 3; ++k)
    EXPECT_EQ(Cube(40.0, 2.0 * static_cast<double>(k + 1)), Calls().queries[k].corners);
  EXPECT_EQ((List{1, 3, 2, 4}), bed.Stencil(1)) << "all of them, unsorted";
  EXPECT_EQ(6.0, bed.supports[0]);
}

// Nobody says where the caller's tree has the cells: at the faces, as the collation does, or at their centres.
TEST(CellPointCubes, OfMethod2EndWhenTheyCoverAllCellsAtFacesAndAtCentres) {
  for (double const ghostX : {5.0, 90.0}) {
    PointBed bed(SomeMesh(ghostX));
    Calls().answer = [](Corners const&) { return List{2}; };
    bed.Search({1.0}, 2, 0.25, 2);
    EXPECT_GE(Calls().queries.back().corners[3], std::fmax(80.0, ghostX));
    EXPECT_LT(Calls().queries.size(), 100U);
    EXPECT_EQ((List{1}), bed.Stencil(1));
  }
}

// What the caller put into the tree need not stand where the mesh has its cells.
TEST(CellPointCubes, OfMethod2GrowBeyondAllCellsWhileTheTreeHasEnoughFartherOut) {
  PointBed bed;
  Calls().answer = [](Corners const& c) { return c[3] > 300.0 ? List{2, 4} : List{2}; };
  bed.Search({1.0}, 2, 0.25, 2);
  EXPECT_EQ((List{1, 3}), bed.Stencil(1));
  EXPECT_EQ(300.0, bed.supports[0]) << "the first multiple of 2 that reaches beyond 300 from 1";
}

TEST(CellPointCubes, OfMethod2FarBeyondAllCellsAreTheSmallestThatHoldEnough) {
  PointBed bed;
  Calls().answer = [](Corners const& c) { return c[3] > 30000.0 ? List{2, 4} : List{2}; };
  bed.Search({1.0}, 2, 0.25, 2);
  EXPECT_EQ((List{1, 3}), bed.Stencil(1));
  EXPECT_EQ(30000.0, bed.supports[0]);
}

// Both centres at one point: the first cube is the point itself, and what it holds may be enough.
TEST(CellPointCubes, OfMethod2WithoutAMeanDistanceBeginAtThePointItself) {
  TestMesh mesh;
  mesh.AddInteriorCell({1, 2, 3});
  mesh.AddInteriorCell({1, 2, 3});
  mesh.JoinInterior(1, 2);
  PointBed bed(mesh);
  Calls().answer = [](Corners const&) { return List{2}; };
  bed.Search({1.0}, 2, 0.25, 1);
  ASSERT_EQ(1U, Calls().queries.size());
  EXPECT_EQ(Cube(1.0, 0.0), Calls().queries[0].corners);
  EXPECT_EQ(0.0, bed.supports[0]);

  PointBed tooFew(mesh);
  Calls().answer = [](Corners const&) { return List{2}; };
  tooFew.Search({1.0}, 2, 0.25, 2);  // cannot be reached and ends all the same
  EXPECT_EQ((List{1}), tooFew.Stencil(1));
}

TEST(CellPointCubes, OfMethod1ReadNothingOfTheMesh) {
  PointBed bed;
  Calls().answer = [](Corners const&) { return List{3}; };
  bed.Initialize(1);
  Array x(1, 1.25), support(1);
  int cellOfBlock[] = {0, 2, 1, 4, 3};
  bed.object->m_pMesh = nullptr;
  bed.object->SearchIBADTress(x.Data(), nullptr, nullptr, 1, 0.5, 0, cellOfBlock, bed.tree, support.Data());
  EXPECT_EQ((List{4}), bed.Stencil(1));
}

TEST(CellPointCubes, OfNoPointsReadNothingAndDestroyTheTree) {
  for (int const method : {1, 2, 3}) {
    PointBed bed;
    bed.object->m_pMesh = nullptr;  // and there is no set-up
    EXPECT_EQ(0, bed.object->SearchIBADTress(nullptr, nullptr, nullptr, method, 0.5, 1, nullptr, bed.tree,
                                             nullptr));
    EXPECT_TRUE(Calls().queries.empty()) << method;
  }
}

TEST(CellPointCubes, OfAnyOtherMethodAreNone) {
  PointBed bed;
  Calls().answer = [](Corners const&) { return List{2}; };
  bed.Search({1.0, 2.0}, 3, 0.25, 2);
  EXPECT_TRUE(Calls().queries.empty());
  EXPECT_EQ(List(), bed.Stencil(2));
}

}  // namespace
}  // namespace zyn_test

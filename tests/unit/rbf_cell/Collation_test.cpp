#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "host/ZYNOptKer.h"
#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"
#include "tests/support/watch/FlushedOutput.h"

// At which point each cell number stands, the tree's range and boxes, and the stencils with their lengths.

namespace zyn_test::collation_test {
namespace {

std::string const kCollationLines =
    "NInnerFaces ok!\nNWall ok!\nNInlet ok!\nNInnerCells ok!\nNWall ok!\nNInlet ok!\nNOutlet ok!\npPartFace "
    "ok!\n";

/// Cells 1 and 2 side by side, and one face of each kind at cell 1. No ghost centre is at its face's centre.
///
///             wall (3), y = 0.5          The other cells: inlet 4 at x = -0.5, outlet 5 at y = -0.5,
///            +---------+---------+       symmetry 6 at z = 0.5, halo 7 at z = -1.
///   inlet    |         |         |
///   (4)      |   (1)   |   (2)   |
///            +---------+---------+
///             outlet (5)
TestMesh AllKinds() {
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0});
  mesh.AddInteriorCell({1.0, 0.0, 0.25});
  mesh.JoinInterior(1, 2);
  mesh.AddSide(kWall, 1, {0.0, 0.5, 0.0}, {0.0, 1.0, 0.0});
  mesh.AddSide(kInlet, 1, {-0.5, 0.0, 0.0}, {-1.0, 0.0, 0.0});
  mesh.AddSide(kOutlet, 1, {0.0, -0.5, 0.0}, {0.0, -1.0, 0.0});
  mesh.AddSide(kSymmetry, 1, {0.0, 0.0, 0.5}, {0.0, 0.0, 1.0});
  mesh.AddSide(kPartition, 1, {0.0, 0.0, -0.5}, {0.0, 0.0, -1.0});
  return mesh;
}

AssertionResult StandsAt(CZynRBFInternalObject const& object, int c, Point point, int kind, int index) {
  AssertionResult const same =
      SameRecord("point", {point.x, point.y, point.z}, kind == 0 ? 0 : c, object.m_pRBFnode[c]);
  if (!same) return same;
  if (object.m_piNodeKind[c] != kind) return AssertionFailure() << "kind " << object.m_piNodeKind[c];
  if (object.m_piNodeKindIndex[c] != index)
    return AssertionFailure() << "index " << object.m_piNodeKindIndex[c];
  return AssertionSuccess();
}

// ------------------------------------------------------------------------------------------------- collation

TEST(CellCollation, InteriorCellsStandAtTheirCentres) {
  CellBed bed(AllKinds());
  bed.SetUp();
  EXPECT_TRUE(StandsAt(*bed.object, 1, {0.0, 0.0, 0.0}, 1, 1));
  EXPECT_TRUE(StandsAt(*bed.object, 2, {1.0, 0.0, 0.25}, 1, 2));
}

TEST(CellCollation, WallInletAndOutletCellsStandAtTheirFaceCentres) {
  CellBed bed(AllKinds());
  bed.SetUp();
  EXPECT_TRUE(StandsAt(*bed.object, 3, {0.0, 0.5, 0.0}, 2, 1));
  EXPECT_TRUE(StandsAt(*bed.object, 4, {-0.5, 0.0, 0.0}, 3, 1));
  EXPECT_TRUE(StandsAt(*bed.object, 5, {0.0, -0.5, 0.0}, 4, 1));
}

TEST(CellCollation, HaloCellsStandAtTheirOwnCentres) {
  CellBed bed(AllKinds());
  bed.SetUp();
  EXPECT_TRUE(StandsAt(*bed.object, 7, {0.0, 0.0, -1.0}, 5, 1));
}

TEST(CellCollation, SymmetryCellsStayAtTheOriginUncollated) {
  TestMesh mesh = AllKinds();
  for (int c = 1; c <= mesh.NCell(); ++c) mesh.Centre(c).x += 10.0;
  mesh.symmetry[0].centre.x += 10.0;
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_TRUE(StandsAt(*bed.object, 6, {0.0, 0.0, 0.0}, 0, 0));
}

TEST(CellCollation, CellOfSeveralFacesTakesTheLastKindAndTheLastFace) {
  TestMesh mesh = AllKinds();
  Face second = mesh.inlet[0];  // the wall's side cell is also that of a second inlet face ...
  second.other = 3;
  second.centre = {-0.5, 0.25, 0.0};
  mesh.inlet.push_back(second);
  Face third = mesh.partition[0];  // ... and the halo cell has a second partition face
  third.centre = {9.0, 9.0, 9.0};
  mesh.partition.push_back(third);
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_TRUE(StandsAt(*bed.object, 3, {-0.5, 0.25, 0.0}, 3, 2));
  EXPECT_TRUE(StandsAt(*bed.object, 7, {0.0, 0.0, -1.0}, 5, 2));
}

TEST(CellCollation, PrintsEachStepInTheseWords) {
  CellBed bed(AllKinds(), DefaultSettings());
  EXPECT_EQ(kCollationLines, bed.SetUp());
}

TEST(CellCollation, PrintsTheSameWithoutAnyFaces) {
  CellBed bed(OneStencil({}, {}), DefaultSettings());
  EXPECT_EQ(kCollationLines, bed.SetUp());
}

TEST(CellCollation, PrintsTheSettingsMessageFirst) {
  CellBed bed(AllKinds());
  EXPECT_EQ("Default DQ parameter is adopted.\n" + kCollationLines, bed.SetUp());
}

TEST(CellCollation, FlushesItsMessages) {
  CellBed bed(AllKinds(), DefaultSettings());
  std::string arrived;
  {
    FlushedOutput const output;
    bed.object->InitialRBFSetting();
    arrived = output.Arrived();
  }
  EXPECT_EQ(kCollationLines, arrived);
}

// ------------------------------------------------------------------------------------------ range and mean

void ExpectBounds(CZynRBFInternalObject const& object, Point high, Point low) {
  EXPECT_EQ(high.x, object.m_dBoundMax[0]);
  EXPECT_EQ(high.y, object.m_dBoundMax[1]);
  EXPECT_EQ(high.z, object.m_dBoundMax[2]);
  EXPECT_EQ(low.x, object.m_dBoundMin[0]);
  EXPECT_EQ(low.y, object.m_dBoundMin[1]);
  EXPECT_EQ(low.z, object.m_dBoundMin[2]);
}

// The outlet at y = -0.5 and the halo cell at z = -1 are in the tree and not in its range.
TEST(CellTreeRange, TakesInnerCellsWallsAndInletsAndLeavesOutletsAndHalosOut) {
  CellBed bed(AllKinds());
  bed.SetUp();
  ExpectBounds(*bed.object, {1.0, 0.5, 0.25}, {-0.5, 0.0, 0.0});
}

TEST(CellTreeRange, OfAMeshWithoutWallsAndInletsIsThatOfTheInnerFaces) {
  TestMesh mesh = AllKinds();
  mesh.wall.clear();
  mesh.inlet.clear();
  CellBed bed(mesh);
  bed.SetUp();
  ExpectBounds(*bed.object, {1.0, 0.0, 0.25}, {0.0, 0.0, 0.0});
}

TEST(CellTreeRange, LeavesOutInteriorCellsWithoutInnerFaces) {
  TestMesh mesh = AllKinds();
  mesh.inner.clear();
  CellBed bed(mesh);
  bed.SetUp();
  ExpectBounds(*bed.object, {0.0, 0.5, 0.0}, {-0.5, 0.0, 0.0});
}

TEST(CellTreeRange, OfNoFacesAtAllStaysInsideOut) {
  CellBed bed(OneStencil({}, {}));
  bed.SetUp();
  ExpectBounds(*bed.object, {-1e10, -1e10, -1e10}, {1e10, 1e10, 1e10});
}

TEST(CellTreeRange, MovesOnlyOnAStrictComparison) {
  TestMesh mesh = AllKinds();
  mesh.Centre(1).y = -0.0;  // first 0.0 with the minus sign, then without
  mesh.Centre(2).y = 0.0;
  mesh.wall.clear();
  mesh.inlet.clear();
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_TRUE(std::signbit(bed.object->m_dBoundMax[1]));
  EXPECT_TRUE(std::signbit(bed.object->m_dBoundMin[1]));
}

TEST(CellMeanDistance, IsThatOfTheTwoCellsOfAnInnerFace) {
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0});
  mesh.AddInteriorCell({3.0, 4.0, 0.0});
  mesh.AddInteriorCell({3.0, 4.0, 2.0});
  mesh.JoinInterior(1, 2);
  mesh.JoinInterior(2, 3);
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_EQ(3.5, bed.object->m_dMeanCellDistance);
}

TEST(CellMeanDistance, WithoutInnerFacesIsNotANumber) {
  CellBed bed(SevenPoints());
  bed.SetUp();
  EXPECT_TRUE(std::isnan(bed.object->m_dMeanCellDistance));
}

// -------------------------------------------------------------------------------------------------- the tree

std::vector<int> Around(CZYNOptKer& tree, Point p, double halfWidth) {
  int count = -1;
  double const d = halfWidth;
  int const* const found =
      tree.SearchNearBlockID(p.x - d, p.y - d, p.z - d, p.x + d, p.y + d, p.z + d, count, 0);
  std::vector<int> result(found, found + count);
  std::sort(result.begin(), result.end());
  return result;
}

TEST(CellTree, HoldsABoxOfHalfWidth1e6thAroundEveryCollatedPoint) {
  CellBed bed(AllKinds());
  bed.SetUp();
  CZYNOptKer& tree = *bed.object->m_pADTree;
  EXPECT_EQ(std::vector<int>({1, 2, 3, 4, 5, 7}), Around(tree, {0.0, 0.0, 0.0}, 100.0));
  EXPECT_EQ(std::vector<int>({2}), Around(tree, {1.0, 0.0, 0.25}, 1e-9));
  EXPECT_EQ(std::vector<int>({3}), Around(tree, {0.0, 0.5, 0.0}, 1e-9));
  EXPECT_EQ(std::vector<int>({7}), Around(tree, {0.0, 0.0, -1.0}, 1e-9));
  for (double const side : {-1.0, 1.0}) {
    EXPECT_EQ(std::vector<int>({2}), Around(tree, {1.0, 0.0, 0.25 + side * 0.9e-6}, 1e-9));
    EXPECT_EQ(std::vector<int>({2}), Around(tree, {1.0 + side * 0.9e-6, 0.0, 0.25}, 1e-9));
    EXPECT_EQ(std::vector<int>(), Around(tree, {1.0, side * 1.1e-6, 0.25}, 1e-9));
    EXPECT_EQ(std::vector<int>(), Around(tree, {1.0 + side * 1.1e-6, 0.0, 0.25}, 1e-9));
  }
}

// -------------------------------------------------------------------------------------------------- stencils

TEST(CellStencil, IsTheCellAndItsNeighboursInTheMeshsOrder) {
  CellBed bed(AllKinds());
  bed.SetUp();
  int const first[] = {7, 1, 2, 3, 4, 5, 6, 7, 0}, second[] = {2, 2, 1, 0};
  EXPECT_TRUE(std::equal(std::begin(first), std::end(first), bed.object->m_ppRBFCellConn[1]));
  EXPECT_TRUE(std::equal(std::begin(second), std::end(second), bed.object->m_ppRBFCellConn[2]));
}

TEST(CellStencil, KeepsDoublesAndTheirOrder) {
  TestMesh mesh = AllKinds();
  mesh.Neighbours(1) = {5, 2, 5, 1, 2};
  CellBed bed(mesh);
  bed.SetUp();
  int const expected[] = {6, 1, 5, 2, 5, 1, 2, 0};
  EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), bed.object->m_ppRBFCellConn[1]));
}

TEST(CellStencil, WithoutNeighboursHasOneMemberAndNoLength) {
  CellBed bed(OneStencil({1.0, 2.0, 3.0}, {}));
  bed.SetUp();
  CZynRBFInternalObject const& object = *bed.object;
  EXPECT_EQ(1, object.m_ppRBFCellConn[1][0]);
  EXPECT_EQ(1, object.m_ppRBFCellConn[1][1]);
  EXPECT_EQ(0, object.m_ppRBFCellConn[1][2]);
  EXPECT_TRUE(SameValue("support length", 0.0, object.m_pSupportLength[1]));
  EXPECT_TRUE(SameRecord("extent", Triple{}, 1, object.m_pStencilExtent[1]));
}

TEST(CellStencil, MeasuresTheDistanceToTheWallsFaceCentre) {
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0});
  mesh.AddSide(kWall, 1, {0.0, 0.5, 0.0}, {0.0, 3.0, 0.0});
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_EQ(0.5, bed.object->m_pSupportLength[1]);
  EXPECT_TRUE(SameRecord("extent", {0.0, 0.5, 0.0}, 1, bed.object->m_pStencilExtent[1]));
}

TEST(CellStencil, MeasuresTheDistanceToTheHaloCellsCentre) {
  CellBed bed(AllKinds());
  bed.SetUp();
  EXPECT_EQ(std::sqrt(1.0625), bed.object->m_pSupportLength[1]) << "to cell 2, farther than the halo cell";
  TestMesh mesh = AllKinds();
  mesh.Centre(7).z = -2.0;
  CellBed farther(mesh);
  farther.SetUp();
  EXPECT_EQ(2.0, farther.object->m_pSupportLength[1]);
}

TEST(CellStencil, ExtentIsThatOfTheBoxAroundAllItsPoints) {
  CellBed bed(AllKinds());
  bed.SetUp();
  EXPECT_TRUE(SameRecord("extent", {1.5, 1.0, 1.25}, 1, bed.object->m_pStencilExtent[1]));
  EXPECT_TRUE(SameRecord("extent", {1.0, 0.0, 0.25}, 2, bed.object->m_pStencilExtent[2]));
}

TEST(CellStencil, IsInflatedByASymmetryCellAtTheOrigin) {
  TestMesh mesh;
  mesh.AddInteriorCell({30.0, 40.0, 0.0});
  mesh.AddInteriorCell({31.0, 40.0, 0.0});
  mesh.JoinInterior(1, 2);
  mesh.AddSide(kSymmetry, 1, {30.0, 40.5, 0.0}, {30.0, 41.0, 0.0});
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_EQ(50.0, bed.object->m_pSupportLength[1]);
  EXPECT_TRUE(SameRecord("extent", {31.0, 40.0, 0.0}, 1, bed.object->m_pStencilExtent[1]));
  EXPECT_EQ(1.0, bed.object->m_pSupportLength[2]);
}

TEST(CellStencil, OfACellNumberThatNothingCollatedReachesToTheOrigin) {
  TestMesh mesh = OneStencil({3.0, 0.0, 4.0}, {{3.0, 1.0, 4.0}});
  mesh.Neighbours(1).push_back(mesh.AddOuterCell({3.0, 0.0, 5.0}));
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_EQ(5.0, bed.object->m_pSupportLength[1]);
}

// A point whose distance from the origin shows in which order its squares were added.
Point TellingPoint() {
  Random random(3);
  std::uniform_real_distribution<double> coordinate(0.5, 1.0);
  for (;;) {
    Point const p{coordinate(random), coordinate(random), coordinate(random)};
    double const x2 = p.x * p.x, y2 = p.y * p.y, z2 = p.z * p.z;
    double const expected = std::sqrt(y2 + x2 + z2);
    if (expected != std::sqrt(y2 + z2 + x2) && expected != std::sqrt(x2 + z2 + y2)) return p;
  }
}

TEST(CellStencil, SumsTheSquaresInTheOrderYXZ) {
  Point const p = TellingPoint();
  CellBed bed(OneStencil({}, {p}));
  bed.SetUp();
  EXPECT_EQ(std::sqrt(p.y * p.y + p.x * p.x + p.z * p.z), bed.object->m_pSupportLength[1]);
}

TEST(CellStencil, RowsOfOtherCellsStayNull) {
  CellBed bed(AllKinds());
  bed.SetUp();
  for (int const c : {0, 3, 4, 5, 6, 7}) EXPECT_EQ(nullptr, bed.object->m_ppRBFCellConn[c]);
}

TEST(CellStencil, LengthsOfOtherCellsStayZero) {
  CellBed bed(AllKinds());
  bed.SetUp();
  for (int const c : {0, 3, 4, 5, 6, 7}) {
    EXPECT_TRUE(SameValue("support length", 0.0, bed.object->m_pSupportLength[c]));
    EXPECT_TRUE(SameRecord("extent", Triple{}, 0, bed.object->m_pStencilExtent[c]));
  }
}

TEST(CellStencil, PointsAndStencilsEqualThePlainForm) {
  for (Cells const cells : kAllCells) {
    LatticeOptions options;
    options.cells = cells;
    TestMesh const mesh = LatticeMesh(options);
    CellBed bed(mesh);
    bed.SetUp();
    PlainCellOperator plain(mesh, 500.0, 0);
    plain.Collate();
    EXPECT_TRUE(SameCollation(plain, *bed.object)) << Name(cells);
    EXPECT_TRUE(SameStencils(plain, *bed.object)) << Name(cells);
    EXPECT_TRUE(SameValue("mean distance", plain.meanDistance, bed.object->m_dMeanCellDistance))
        << Name(cells);
  }
}

}  // namespace
}  // namespace zyn_test::collation_test

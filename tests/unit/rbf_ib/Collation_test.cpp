#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"

// Where each cell number stands, what the tree's range is made of, which nodes count as boundary nodes, which cells
// stand around a node, and which cells are entered in the tree.

namespace zyn_test::collation_test {
namespace {

using Object = CZynIBRBFInternalObject;

void Collate(PointBed& bed) {
  bed.object.Initialize_IB_memory_allocate(1);
  EXPECT_EQ(1, bed.object.SetIBNodeCollation());
}

void ExpectPosition(Object const& object, int c, Point expected, int tag, int kind) {
  IBCnode const& p = object.m_pIBCnode[c];
  EXPECT_EQ(expected.x, p.x) << "cell " << c;
  EXPECT_EQ(expected.y, p.y) << "cell " << c;
  EXPECT_EQ(expected.z, p.z) << "cell " << c;
  EXPECT_EQ(tag, p.tag) << "cell " << c;
  EXPECT_EQ(kind, object.m_piNodeKind[c]) << "cell " << c;
}

std::vector<int> NodeRow(Object const& object, int node) {
  int const* const row = object.ppRBFiNodeConn[node];
  return std::vector<int>(row + 1, row + 1 + row[0]);
}

/// Two interior cells and a face of every group, each with a node of its own; face centres and ghost centres
/// differ, and every coordinate occurs once.
///
///   cell 1: interior    cell 3: wall        cell 5: outlet     cell 7: partition
///   cell 2: interior    cell 4: inlet       cell 6: symmetry
///   nodes 1, 2: of the interior cells; nodes 3..7: of the faces that lead to cells 3..7
struct OneOfEach : TestMesh {
  OneOfEach() {
    double const places[] = {0.25, 1.25, 10, 20, 30, 40, 50};
    for (double const x : places) AddNode({x, x + 1, x + 2});
    AddCell({1, 2, 3}, {1, 2});
    AddCell({4, 6, 3}, {1, 2});
    JoinInterior(1, 2);
    AddSide(kWall, 1, {11, 12, 13}, {111, 112, 113}, {3});
    AddSide(kInlet, 1, {21, 22, 23}, {121, 122, 123}, {4});
    AddSide(kOutlet, 1, {31, 32, 33}, {131, 132, 133}, {5});
    AddSide(kSymmetry, 2, {41, 42, 43}, {141, 142, 143}, {6});
    AddSide(kPartition, 2, {51, 52, 53}, {151, 152, 153}, {7});
  }
};

// ------------------------------------------------------------------------------------------------- positions

TEST(PointCollation, PlacesInteriorCellsAtTheirCentres) {
  PointBed bed{OneOfEach()};
  Collate(bed);
  ExpectPosition(bed.object, 1, {1, 2, 3}, 1, 1);
  ExpectPosition(bed.object, 2, {4, 6, 3}, 2, 1);
}

TEST(PointCollation, PlacesGhostCellsOfWallsInletsAndOutletsAtTheirFaceCentres) {
  PointBed bed{OneOfEach()};
  Collate(bed);
  ExpectPosition(bed.object, 3, {11, 12, 13}, 3, 2);
  ExpectPosition(bed.object, 4, {21, 22, 23}, 4, 3);
  ExpectPosition(bed.object, 5, {31, 32, 33}, 5, 4);
}

TEST(PointCollation, PlacesHaloCellsAtTheirOwnCentres) {
  PointBed bed{OneOfEach()};
  Collate(bed);
  ExpectPosition(bed.object, 7, {151, 152, 153}, 7, 5);
}

TEST(PointCollation, LeavesGhostCellsOfSymmetryFacesAtTheOriginWithoutKindAndTag) {
  PointBed bed{OneOfEach()};
  Collate(bed);
  ExpectPosition(bed.object, 6, {0, 0, 0}, 0, 0);
}

TEST(PointCollation, LetsTheLaterGroupWinACellOfTwo) {
  OneOfEach mesh;
  mesh.inlet[0].other = 3;   // the wall's cell
  mesh.outlet[0].other = 2;  // an interior cell
  mesh.partition[0].other = 2;
  PointBed bed(mesh);
  Collate(bed);
  ExpectPosition(bed.object, 3, {21, 22, 23}, 3, 3);
  ExpectPosition(bed.object, 2, {4, 6, 3}, 2, 5);
  ExpectPosition(bed.object, 4, {0, 0, 0}, 0, 0);
}

// ---------------------------------------------------------------------------------------------------- bounds

TEST(PointCollation, MeasuresInnerCellsWallsAndInletsButNeitherOutletsNorSymmetryNorHaloCells) {
  PointBed bed{OneOfEach()};
  Collate(bed);
  EXPECT_EQ(21.0, bed.object.Xmax);
  EXPECT_EQ(22.0, bed.object.Ymax);
  EXPECT_EQ(23.0, bed.object.Zmax);
  EXPECT_EQ(1.0, bed.object.Xmin);
  EXPECT_EQ(2.0, bed.object.Ymin);
  EXPECT_EQ(3.0, bed.object.Zmin);
}

TEST(PointCollation, LeavesCellsWithoutAnInnerFaceOutOfTheBounds) {
  TestMesh mesh = LooseCells({{0, 0, 0}, {1, 1, 1}, {7, 7, 7}});
  PointBed bed(mesh);
  Collate(bed);
  EXPECT_EQ(1.0, bed.object.Xmax);
}

TEST(PointCollation, TakesTheMeanOfTheDistancesBetweenNeighbours) {
  TestMesh mesh = LooseCells({{1, 2, 3}, {4, 6, 3}, {4, 6, 10}});
  mesh.JoinInterior(2, 3);
  PointBed bed(mesh);
  Collate(bed);
  EXPECT_EQ((5.0 + 7.0) / 2.0, bed.object.MeanDistance);
}

TEST(PointCollation, WithoutInnerFacesHasNoMeanDistanceAndBoundsInsideOut) {
  PointBed bed(LooseCells({{1, 2, 3}}));
  Collate(bed);
  EXPECT_TRUE(std::isnan(bed.object.MeanDistance));
  EXPECT_EQ(-1e10, bed.object.Xmax);
  EXPECT_EQ(1e10, bed.object.Xmin);
}

// --------------------------------------------------------------------------------------------- boundary nodes

TEST(PointCollation, MarksNodesOfWallsInletsAndOutletsAlone) {
  PointBed bed{OneOfEach()};
  Collate(bed);
  bool const expected[] = {false, false, true, true, true, false, false};
  for (int n = 1; n <= 7; ++n) EXPECT_EQ(expected[n - 1], bed.object.m_bBoundaryNode[n]) << "node " << n;
  EXPECT_EQ(7, bed.object.m_bBoundaryNode.GetSize());
}

TEST(PointCollation, EqualsThePlainFormOnALattice) {
  for (bool const listInterior : {true, false}) {
    HexahedraOptions options;
    options.listInteriorCellsAtBoundaryNodes = listInterior;
    PointBed bed(Hexahedra(options));
    Array marks = AllUsable(bed.host.mesh.NCell);
    marks[5] = kUnusable;
    bed.SetUpToTree(marks, 1);
    PlainPointOperator plain(bed.host.mesh, bed.host.partitionFaces);
    plain.Collate();
    plain.CollectNodeCells(marks.Data());
    plain.EnterCells(marks.Data());
    EXPECT_TRUE(SameCollation(plain, bed.object));
    EXPECT_TRUE(SameNodeCells(plain, bed.object));
    EXPECT_TRUE(SameIdentities(plain, bed.object));
  }
}

// ------------------------------------------------------------------------------------------ cells around nodes

/// A boundary node 1 (of a wall) and an inner node 2, with three interior cells at both.
struct TwoNodes : TestMesh {
  TwoNodes() {
    AddNode({0, 0, 0});
    AddNode({1, 0, 0});
    for (int c = 1; c <= 3; ++c) AddCell({0.5, 1.0 * c, 0}, {2, 1});
    JoinInterior(1, 2);
    AddSide(kWall, 1, {0, 0.5, 0}, {0, -1, 0}, {1});
    NodeCells(1) = {};
    NodeCells(2) = {3, 1, 2};
  }
};

std::vector<int> RowsOf(TestMesh const& mesh, int node, std::vector<int> const& unusable = {}) {
  PointBed bed(mesh);
  Array marks = AllUsable(mesh.NCell());
  for (int const c : unusable) marks[c] = kUnusable;
  bed.SetUpToTree(marks, 1);
  return NodeRow(bed.object, node);
}

using List = std::vector<int>;

TEST(PointNodeRows, KeepTheHostsOrder) { EXPECT_EQ((List{3, 1, 2}), RowsOf(TwoNodes(), 2)); }

TEST(PointNodeRows, HoldUsableCellsAlone) { EXPECT_EQ((List{3, 2}), RowsOf(TwoNodes(), 2, {1})); }

TEST(PointNodeRows, OfBoundaryNodesGetTheInteriorCellsInAscendingOrder) {
  EXPECT_EQ((List{1, 2, 3}), RowsOf(TwoNodes(), 1));
  EXPECT_EQ((List{1, 3}), RowsOf(TwoNodes(), 1, {2}));
}

TEST(PointNodeRows, OfBoundaryNodesHoldTheHostsCellsFirst) {
  TwoNodes mesh;
  mesh.NodeCells(1) = {4};
  EXPECT_EQ((List{4, 1, 2, 3}), RowsOf(mesh, 1));
}

TEST(PointNodeRows, OfBoundaryNodesHoldNoCellTwice) {
  TwoNodes mesh;
  mesh.NodeCells(1) = {4, 3, 1};
  EXPECT_EQ((List{4, 3, 1, 2}), RowsOf(mesh, 1));
}

TEST(PointNodeRows, OfOtherNodesGetNothingBesideTheHostsCells) {
  TwoNodes mesh;
  mesh.NodeCells(2) = {2};
  EXPECT_EQ((List{2}), RowsOf(mesh, 2));
}

TEST(PointNodeRows, OfSymmetryAndPartitionNodesGetNothingBesideTheHostsCells) {
  TwoNodes mesh;
  mesh.symmetry = mesh.wall;
  mesh.wall.clear();
  EXPECT_EQ(List(), RowsOf(mesh, 1));
  mesh.partition = mesh.symmetry;
  mesh.symmetry.clear();
  EXPECT_EQ(List(), RowsOf(mesh, 1));
}

TEST(PointNodeRows, WithoutUsableCellsAreEmpty) {
  PointBed bed{TwoNodes()};
  Array marks(4, kUnusable);
  bed.SetUpToTree(marks, 1);
  for (int const n : {1, 2}) {
    ASSERT_NE(nullptr, bed.object.ppRBFiNodeConn[n]);
    EXPECT_EQ(0, bed.object.ppRBFiNodeConn[n][0]);
  }
}

// --------------------------------------------------------------------------------------------------- the tree

TEST(PointIdentities, AreConsecutiveInAscendingOrderOfTheUsableCells) {
  PointBed bed{OneOfEach()};
  Array marks(7, kUnusable);
  for (int const c : {2, 3, 6, 7}) marks[c] = kUsable;
  bed.SetUpToTree(marks, 1);
  int const blockOfCell[] = {0, 0, 1, 2, 0, 0, 3, 4};
  int const cellOfBlock[] = {0, 2, 3, 6, 7};
  for (int c = 1; c <= 7; ++c) EXPECT_EQ(blockOfCell[c], bed.object.m_piCellToBlock[c]) << "cell " << c;
  for (int b = 0; b <= 4; ++b) EXPECT_EQ(cellOfBlock[b], bed.object.m_piBlockToCell[b]) << "identity " << b;
}

TEST(PointIdentities, BelongToStrictlyNegativeMarksAlone) {
  PointBed bed{OneOfEach()};
  double const nan = std::numeric_limits<double>::quiet_NaN();
  double const values[] = {0.0, -0.0, 1.0, -5e-324, nan, -nan, -1e300};
  int const expected[] = {0, 0, 0, 1, 0, 0, 2};
  Array marks(7);
  for (int c = 1; c <= 7; ++c) marks[c] = values[c - 1];
  bed.SetUpToTree(marks, 1);
  for (int c = 1; c <= 7; ++c) EXPECT_EQ(expected[c - 1], bed.object.m_piCellToBlock[c]) << "cell " << c;
}

TEST(PointIdentities, WithoutUsableCellsAreNone) {
  PointBed bed{OneOfEach()};
  Array marks(7, kUnusable);
  bed.SetUpToTree(marks, 1);
  EXPECT_EQ(0, bed.object.m_piBlockToCell[0]);
}

}  // namespace
}  // namespace zyn_test::collation_test

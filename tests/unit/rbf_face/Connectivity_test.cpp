#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"

// The tables of connectivity: cells around vertices, vertices of cells, neighbours of cells, faces of cells.

namespace zyn_test::connectivity_test {
namespace {

using Row = std::vector<int>;
using AtBoundaryNodes = TestMesh::AtBoundaryNodes;

/// An operator with its tables of connectivity.
struct Connected {
  explicit Connected(TestMesh const& plan) : bed(plan), stages(bed.object, kInner, {}) { stages.Collate(); }

  Row Around(int v) { return RowOf(bed.object.ppRBFiNodeConn[v]); }
  Row VerticesOf(int c) { return RowOf(bed.object.m_ppRBFlnods[c]); }
  Row NeighboursOf(int c) { return RowOf(bed.object.m_ppRBFCell33Conn[c]); }
  Row FacesOf(int c) { return RowOf(bed.object.m_ppRBFCell32Conn[c]); }
  Row TypesOf(int c) {
    int const n = bed.object.m_ppRBFCell32Conn[c][0];
    return Row(bed.object.m_ppRBFCell32Type[c] + 1, bed.object.m_ppRBFCell32Type[c] + 1 + n);
  }
  int Owner(Group group, int f) {
    return bed.host.Description().Of(group)[static_cast<std::size_t>(f - 1)].cv;
  }
  int Beyond(Group group, int f) {
    return bed.host.Description().Of(group)[static_cast<std::size_t>(f - 1)].other;
  }

  FaceBed bed;
  Stages stages;
};

// ------------------------------------------------------------------------------------------ cells around vertices

// The two unit cubes: their cells beyond the faces are 3 inlet, 4 outlet, 5 and 7 wall below, 6 and 8 partition
// above, 9 and 11 symmetry behind, 10 and 12 wall in front. Node 1 is the corner (-1, -0.5, -0.5), node 2 the one
// beside it in the middle plane.
TEST(CellsAroundVertices, AreTheMeshsRowAtAVertexOffTheBoundary) {
  TestMesh plan = CubesOfAllGroups();
  int const inside = 22;  // node (1, 1, 1)
  plan.nodeCells[inside] = {14, 1, 13, 2, 5};
  Connected o(plan);
  ASSERT_FALSE(o.bed.object.m_BoundaryNode[inside]);
  EXPECT_EQ((Row{14, 1, 13, 2, 5}), o.Around(inside));
}

TEST(CellsAroundVertices, GetTheInteriorCellsInAscendingOrderBehindAMeshsRowOfOuterCells) {
  TestMesh plan = TwoCubes();
  plan.ListCellsAroundNodes(AtBoundaryNodes::OuterCellsOnly);
  ASSERT_EQ((Row{5, 7, 9, 11}), plan.nodeCells[2]);
  Connected o(plan);
  EXPECT_EQ((Row{5, 7, 9, 11, 1, 2}), o.Around(2));
}

TEST(CellsAroundVertices, HoldNoCellTwiceWhenTheMeshListsInteriorCellsToo) {
  TestMesh plan = TwoCubes();
  ASSERT_EQ((Row{1, 2, 5, 7, 9, 11}), plan.nodeCells[2]);
  Connected o(plan);
  EXPECT_EQ((Row{1, 2, 5, 7, 9, 11}), o.Around(2));
}

TEST(CellsAroundVertices, KeepTheMeshsOrderAndAddWhatItLeavesOut) {
  TestMesh plan = TwoCubes();
  plan.nodeCells[2] = {11, 2, 5, 9, 7};
  Connected o(plan);
  EXPECT_EQ((Row{11, 2, 5, 9, 7, 1}), o.Around(2));
}

TEST(CellsAroundVertices, HoldNoCellTwiceThatTheMeshListsTwice) {
  TestMesh plan = TwoCubes();
  plan.nodeCells[2] = {5, 2, 5, 2};
  Connected o(plan);
  EXPECT_EQ((Row{5, 2, 1}), o.Around(2));
}

TEST(CellsAroundVertices, AreTheSameSetsWhateverTheMeshListsAtItsBoundary) {
  TestMesh outerOnly = SkewedCubesOfAllGroups();
  outerOnly.ListCellsAroundNodes(AtBoundaryNodes::OuterCellsOnly);
  Connected a(SkewedCubesOfAllGroups()), b(outerOnly);
  for (int v = 1; v <= outerOnly.NNode(); ++v) {
    Row rowA = a.Around(v), rowB = b.Around(v);
    std::sort(rowA.begin(), rowA.end());
    std::sort(rowB.begin(), rowB.end());
    EXPECT_EQ(rowA, rowB) << v;
  }
}

// ---------------------------------------------------------------------------------------------- vertices of cells

TEST(VerticesOfCells, OfAnInteriorCellAreTheMeshsWithTheirCountFromElsewhere) {
  TestMesh const plan = TwoCubes();
  Connected o(plan);
  EXPECT_EQ(plan.cellNodes[1], o.VerticesOf(1));
  EXPECT_EQ(plan.cellNodes[2], o.VerticesOf(2));
}

TEST(VerticesOfCells, OfAnOuterCellAreThoseOfItsFace) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Connected o(plan);
  for (Group const group : {kWall, kInlet, kOutlet, kPartition, kSymmetry})
    for (Face const& face : plan.Of(group)) EXPECT_EQ(face.nodes, o.VerticesOf(face.other)) << group;
}

TEST(VerticesOfCells, OfAHaloCellOfTwoFacesAreThoseOfTheLater) {
  TestMesh plan = TwoCubes();
  int const halo = plan.Of(kPartition)[0].other;
  plan.Of(kPartition)[1].other = halo;
  plan.Of(kPartition)[1].nodes.pop_back();
  Connected o(plan);
  EXPECT_EQ(plan.Of(kPartition)[1].nodes, o.VerticesOf(halo));
}

TEST(VerticesOfCells, OfACellThatNoFaceNamesAreNone) {
  TestMesh plan = TwoCubes();
  int const lonely = plan.AddOuterCell({7.0, 8.0, 9.0});
  Connected o(plan);
  EXPECT_EQ(Row{}, o.VerticesOf(lonely));
}

// Every row has room for the most vertices of any cell, zeros behind its own.
TEST(VerticesOfCells, LeaveZerosBehindThemUpToTheGreatestNumber) {
  TestMesh const plan = TwoCubes();
  Connected o(plan);
  for (int c = 3; c <= plan.NCell(); ++c)
    for (int k = 5; k <= 8; ++k) EXPECT_EQ(0, o.bed.object.m_ppRBFlnods[c][k]);
}

// --------------------------------------------------------------------------------------------- neighbours of cells

TEST(NeighboursOfCells, OfAnInteriorCellFollowTheOrderOfItsFaces) {
  Connected o(TwoCubes());
  EXPECT_EQ((Row{3, 2, 5, 6, 9, 10}), o.NeighboursOf(1));
  EXPECT_EQ((Row{1, 4, 7, 8, 11, 12}), o.NeighboursOf(2));
  TestMesh turned = TwoCubes();
  std::reverse(turned.cellFaces[1].begin(), turned.cellFaces[1].end());
  Connected t(turned);
  EXPECT_EQ((Row{10, 9, 6, 5, 2, 3}), t.NeighboursOf(1));
}

TEST(NeighboursOfCells, OfABoundarySideCellBeginWithItsOwner) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Connected o(plan);
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry})
    for (int f = 1; f <= o.bed.host.NFace(group); ++f)
      EXPECT_EQ(o.Owner(group, f), o.NeighboursOf(o.Beyond(group, f))[0]) << group << " " << f;
}

// The four edges of the inlet's face lead to one cell each. The halo cell 6 is among them.
TEST(NeighboursOfCells, OfABoundarySideCellAreThoseAcrossItsEdges) {
  Connected o(TwoCubes());
  Row row = o.NeighboursOf(3);
  ASSERT_EQ(5U, row.size());
  EXPECT_EQ(1, row[0]);
  std::sort(row.begin() + 1, row.end());
  EXPECT_EQ((Row{1, 5, 6, 9, 10}), row);
}

TEST(NeighboursOfCells, OfABoundarySideCellStandInTheOrderInWhichTheyAreMet) {
  TestMesh const plan = TwoCubes();
  Connected o(plan);
  Row met;
  for (int const v : o.VerticesOf(3))
    for (int const d : o.Around(v))
      if (d > 3 && std::find(met.begin(), met.end(), d) == met.end()) met.push_back(d);
  met.insert(met.begin(), 1);
  EXPECT_EQ(met, o.NeighboursOf(3));
}

TEST(NeighboursOfCells, OfABoundarySideCellLeaveOutThoseAtACornerAlone) {
  Connected o(CubesOfAllGroups());
  int const middle = o.Beyond(kInlet, 5);
  Row row = o.NeighboursOf(middle);
  std::sort(row.begin() + 1, row.end());
  EXPECT_EQ((Row{o.Owner(kInlet, 5), o.Beyond(kInlet, 2), o.Beyond(kInlet, 4), o.Beyond(kInlet, 6),
                 o.Beyond(kInlet, 8)}),
            row);
}

bool IsNeighbour(Connected& o, int c, int d) {
  Row const row = o.NeighboursOf(c);
  return std::find(row.begin(), row.end(), d) != row.end();
}

// The inlet's face (3) and the one below it (5) share the vertices 1 and 7.
TEST(NeighboursOfCells, ShareExactlyTwoVertices) {
  for (int const shared : {0, 1, 2, 3, 4}) {
    TestMesh plan = TwoCubes();
    Row const inlet = plan.Of(kInlet)[0].nodes;
    Row below = {2, 8, 5, 11};  // none of the inlet's
    for (std::size_t k = 0; k < static_cast<std::size_t>(shared); ++k) below[k] = inlet[k];
    plan.Of(kWall)[0].nodes = below;
    plan.ListCellsAroundNodes();
    ASSERT_EQ(5, plan.Of(kWall)[0].other);
    Connected o(plan);
    EXPECT_EQ(shared == 2, IsNeighbour(o, 3, 5)) << shared;
    EXPECT_EQ(shared == 2, IsNeighbour(o, 5, 3)) << shared;
  }
}

// A mesh that lists a cell twice around a vertex does not make one shared vertex two.
TEST(NeighboursOfCells, AreNotFoundByACellThatIsListedTwice) {
  TestMesh plan = CubesOfAllGroups();
  int const middle = plan.Of(kInlet)[4].other, corner = plan.Of(kInlet)[0].other;
  for (auto& row : plan.nodeCells) {
    if (std::find(row.begin(), row.end(), corner) != row.end()) row.push_back(corner);
  }
  Connected o(plan);
  EXPECT_FALSE(IsNeighbour(o, middle, corner));
}

TEST(NeighboursOfCells, OfAHaloCellAreItsOwnerAlone) {
  Connected o(SkewedCubesOfAllGroups());
  for (int f = 1; f <= o.bed.host.NFace(kPartition); ++f)
    EXPECT_EQ(Row{o.Owner(kPartition, f)}, o.NeighboursOf(o.Beyond(kPartition, f)));
}

TEST(NeighboursOfCells, OfAHaloCellOfTwoFacesAreTheOwnerOfTheLaterAlone) {
  TestMesh plan = TwoCubes();
  plan.Of(kPartition)[1].other = plan.Of(kPartition)[0].other;
  Connected o(plan);
  EXPECT_EQ(Row{2}, o.NeighboursOf(o.Beyond(kPartition, 1)));
}

TEST(NeighboursOfCells, OfACellThatNoFaceNamesAreOneEmptyEntry) {
  TestMesh plan = TwoCubes();
  int const lonely = plan.AddOuterCell({7.0, 8.0, 9.0});
  Connected o(plan);
  EXPECT_EQ(Row{0}, o.NeighboursOf(lonely));
}

// Which cell stands first around a vertex, an interior or an outer one, makes no difference to who is found.
TEST(NeighboursOfCells, EqualThePlainFormHoweverTheMeshListsTheCellsAroundItsVertices) {
  for (bool const outerOnly : {false, true}) {
    for (bool const reversed : {false, true}) {
      TestMesh plan = SkewedCubesOfAllGroups();
      if (outerOnly) plan.ListCellsAroundNodes(AtBoundaryNodes::OuterCellsOnly);
      for (auto& row : plan.nodeCells)
        if (reversed) std::reverse(row.begin(), row.end());
      Connected o(plan);
      PlainFaceOperator plain = o.bed.Plain(kInner, {});
      plain.Collate();
      EXPECT_TRUE(SameConnectivity(plain, o.bed.object)) << outerOnly << reversed;
      for (int c = 28; c <= plan.NCell(); ++c)
        if (plain.kinds[static_cast<std::size_t>(c)] != kPartition) {
          EXPECT_EQ(5U, o.NeighboursOf(c).size()) << "an owner and four edges";
        }
    }
  }
}

// ------------------------------------------------------------------------------------------------- faces of cells

struct WithFaces : Connected {
  explicit WithFaces(TestMesh const& plan) : Connected(plan) {
    EXPECT_EQ(0, bed.object.Create_m_ppRBFCell32Conn());
  }
};

TEST(FacesOfCells, AreNotMadeBySetUp) {
  Connected o(TwoCubes());
  o.stages.Derive();
  EXPECT_EQ(nullptr, o.bed.object.m_ppRBFCell32Conn);
  EXPECT_EQ(nullptr, o.bed.object.m_ppRBFCell32Type);
}

TEST(FacesOfCells, OfAnInteriorCellAreTheMeshsWithTheTypesOfTheirCodes) {
  WithFaces o(TwoCubes());
  EXPECT_EQ((Row{1, 1, 1, 1, 1, 3}), o.FacesOf(1));
  EXPECT_EQ((Row{kInlet, kInner, kWall, kPartition, kSymmetry, kWall}), o.TypesOf(1));
  EXPECT_EQ((Row{1, 1, 2, 2, 2, 4}), o.FacesOf(2));
  EXPECT_EQ((Row{kInner, kOutlet, kWall, kPartition, kSymmetry, kWall}), o.TypesOf(2));
}

TEST(FacesOfCells, OfAWallsSideCellAreNumbersWithoutTypes) {
  WithFaces o(TwoCubes());
  for (int f = 1; f <= 4; ++f) {
    EXPECT_EQ(Row{f}, o.FacesOf(o.Beyond(kWall, f)));
    EXPECT_EQ(Row{0}, o.TypesOf(o.Beyond(kWall, f)));
  }
}

TEST(FacesOfCells, OfOtherOuterCellsAreCountedButNotFilledIn) {
  WithFaces o(TwoCubes());
  for (Group const group : {kInlet, kOutlet, kPartition, kSymmetry}) {
    EXPECT_EQ(Row{0}, o.FacesOf(o.Beyond(group, 1))) << group;
    EXPECT_EQ(Row{0}, o.TypesOf(o.Beyond(group, 1))) << group;
  }
}

TEST(FacesOfCells, OfACellOfSeveralFacesHaveTheWallsInFront) {
  TestMesh plan = TwoCubes();
  int const ghost = plan.Of(kInlet)[0].other;
  plan.Of(kWall)[0].other = ghost;
  plan.Of(kWall)[2].other = ghost;
  plan.Of(kPartition)[1].other = plan.Of(kPartition)[0].other;
  WithFaces o(plan);
  EXPECT_EQ((Row{1, 3, 0}), o.FacesOf(ghost));
  EXPECT_EQ((Row{0, 0, 0}), o.TypesOf(ghost));
  EXPECT_EQ((Row{0, 0}), o.FacesOf(plan.Of(kPartition)[0].other));
}

TEST(FacesOfCells, OfACellThatNoFaceNamesAreNone) {
  TestMesh plan = TwoCubes();
  int const lonely = plan.AddOuterCell({7.0, 8.0, 9.0});
  WithFaces o(plan);
  EXPECT_EQ(Row{}, o.FacesOf(lonely));
}

TEST(FacesOfCells, EqualThePlainForm) {
  WithFaces o(SkewedCubesOfAllGroups());
  PlainFaceOperator plain = o.bed.Plain(kInner, {});
  plain.Collate();
  plain.CreateCellFaces();
  for (int c = 1; c <= plain.mesh.NCell; ++c) {
    EXPECT_EQ(plain.cellFaces[static_cast<std::size_t>(c)], o.FacesOf(c)) << c;
    EXPECT_EQ(plain.cellFaceTypes[static_cast<std::size_t>(c)], o.TypesOf(c)) << c;
  }
}

}  // namespace
}  // namespace zyn_test::connectivity_test

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/support/compare/SameBits.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/SettingsFolder.h"

// The virtual points P and E of method 4, the cells tied to them and the stencils around them; and the class's
// other ways of doing the same, which no set-up takes.

namespace zyn_test::virtual_nodes_test {
namespace {

using Row = std::vector<int>;

/// An operator with its cells in the tree, before any stencil.
struct Ready {
  explicit Ready(TestMesh const& plan, int faceType = kInner, FaceSettings const& settings = {})
      : bed(plan), stages(bed.object, faceType, settings) {
    stages.FillTree();
  }
  CZynFaceRBFInternalObject* operator->() { return &bed.object; }

  IBCnode& P(int i = 1) { return bed.object.m_ppVirtualNode[i][1]; }
  IBCnode& E(int i = 1) { return bed.object.m_ppVirtualNode[i][2]; }
  Row Stencil(int i = 1) { return RowOf(bed.object.m_ppFaceCellConn[i]); }
  std::vector<Row> Positions(int i = 1) { return RowsOf(bed.object.m_pFaceRows[i]); }

  /// Places the virtual points of face i from its own cells and area vector.
  void Place(int i = 1) {
    Face const& face = FaceOf(i);
    int pair[] = {face.cv, face.other};
    EXPECT_EQ(0, bed.object.Set_VirtualNode_Coord_and_ClosestCellID(bed.object.iFaceType, i, pair,
                                                                    face.area.x, face.area.y, face.area.z));
  }
  void PlaceInCells(int i = 1) {
    Face const& face = FaceOf(i);
    int pair[] = {face.cv, face.other};
    EXPECT_EQ(0, bed.object.Set_VirtualNode_Coord_InCellPE(bed.object.iFaceType, i, pair, face.area.x,
                                                           face.area.y, face.area.z));
  }
  Face const& FaceOf(int i) {
    return bed.host.Description().Of(
        static_cast<Group>(bed.object.iFaceType))[static_cast<std::size_t>(i - 1)];
  }

  FaceBed bed;
  Stages stages;
};

AssertionResult Stands(IBCnode const& node, Point point, int cell) {
  if (AssertionResult same = SamePoint("point", point, node); !same) return same;
  if (node.tag != cell) return ::testing::AssertionFailure() << "tied to " << node.tag;
  return ::testing::AssertionSuccess();
}

// ------------------------------------------------------------------------------------------------- the points

TEST(VirtualPoints, AreTheFeetOfTheCellsOnTheNormalThroughTheFace) {
  TestMesh plan = TwoCubes();
  plan.centres[1] = {-0.5, 0.25, 0.125};
  plan.centres[2] = {0.75, -0.25, 0.0};
  Ready o(plan);
  o.Place();
  EXPECT_TRUE(Stands(o.P(), {-0.5, 0.0, 0.0}, 1));
  EXPECT_TRUE(Stands(o.E(), {0.75, 0.0, 0.0}, 2));
}

// On the line through (0, 0, 0) along (1, 1, 0): the cells at (-1, 0, 0) and (0, 2, 0) have their feet at
// (-1/2, -1/2, 0) and (1, 1, 0).
TEST(VirtualPoints, StandOnAnObliqueNormal) {
  TestMesh plan = TwoCubes();
  plan.centres[1] = {-1.0, 0.0, 0.0};
  plan.centres[2] = {0.0, 2.0, 0.0};
  plan.Of(kInner)[0].area = {1.0, 1.0, 0.0};
  Ready o(plan);
  o.Place();
  EXPECT_TRUE(SamePoint("P", {-0.5, -0.5, 0.0}, o.P()));
  EXPECT_TRUE(SamePoint("E", {1.0, 1.0, 0.0}, o.E()));
}

TEST(VirtualPoints, DoNotDependOnTheLengthOfTheAreaVector) {
  for (double const factor : {1.0, 0.0078125, 4096.0, -1.0}) {
    TestMesh plan = SkewedCubesOfAllGroups();
    Ready before(plan);
    before.Place(20);
    Point& s = plan.Of(kInner)[19].area;
    s = {factor * s.x, factor * s.y, factor * s.z};
    Ready after(plan);
    after.Place(20);
    IBCnode const &p = before.P(20), &e = before.E(20);
    EXPECT_TRUE(Stands(after.P(20), {p.x, p.y, p.z}, p.tag)) << factor;
    EXPECT_TRUE(Stands(after.E(20), {e.x, e.y, e.z}, e.tag)) << factor;
  }
}

TEST(VirtualPoints, OfACellOnTheNormalAreItsCentreAndTiedToIt) {
  TestMesh const plan = CubesOfAllGroups();
  Ready o(plan);
  for (int i = 1; i <= o->NFace; ++i) {
    o.Place(i);
    Face const& face = o.FaceOf(i);
    EXPECT_TRUE(Stands(o.P(i), plan.centres[static_cast<std::size_t>(face.cv)], face.cv)) << i;
    EXPECT_TRUE(Stands(o.E(i), plan.centres[static_cast<std::size_t>(face.other)], face.other)) << i;
  }
}

// The face's line passes far from its own cells' centres: their feet lie next to other cells.
TEST(VirtualPoints, AreTiedToWhateverCellIsNearest) {
  TestMesh plan = CubesOfAllGroups();
  Face face;  // between 13 and 14, but its centre in the row of cells above
  face.cv = 13, face.other = 14, face.nodes = {1, 2, 3, 4};
  face.centre = {1.0, 2.5, 1.5};
  face.area = {1.0, 0.0, 0.0};
  plan.Of(kInner)[0] = face;
  Ready o(plan);
  o.Place();
  EXPECT_TRUE(Stands(o.P(), {0.5, 2.5, 1.5}, 16));
  EXPECT_TRUE(Stands(o.E(), {1.5, 2.5, 1.5}, 17));
}

TEST(VirtualPoints, MayBeTiedToABoundarySideCell) {
  TestMesh plan = TwoCubes();
  plan.centres[1] = {-0.875, 0.25, 0.0};  // the foot at (-0.875, 0, 0) is nearer to the inlet's face
  Ready o(plan);
  o.Place();
  EXPECT_EQ(plan.Of(kInlet)[0].other, o.P().tag);
}

TEST(VirtualPoints, MayLieOutsideTheMesh) {
  TestMesh plan = TwoCubes();
  plan.Of(kInner)[0].centre = {0.0, 30.0, 0.0};
  Ready o(plan);
  o.Place();
  EXPECT_TRUE(SamePoint("P", {-0.5, 30.0, 0.0}, o.P()));
  EXPECT_GT(o.P().tag, 0);
}

TEST(VirtualPoints, OnBoundaryFacesHaveEAtTheFaceBitForBitTiedToItsSideCell) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    Ready o(plan, group);
    for (int i = 1; i <= o->NFace; ++i) {
      o.Place(i);
      Point const target = {o->m_FaceX[i], o->m_FaceY[i], o->m_FaceZ[i]};
      EXPECT_TRUE(Stands(o.E(i), target, o.FaceOf(i).other)) << group << " " << i;
      EXPECT_TRUE(SamePoint("centre", o.FaceOf(i).centre, o.E(i))) << group << " " << i;
    }
  }
}

// A twin of the side cell is there to be found instead.
TEST(VirtualPoints, OnBoundaryFacesTieEWithoutASearch) {
  TestMesh plan = TwoCubes();
  plan.Of(kWall)[0].centre = plan.centres[1];
  Ready o(plan, kWall);
  int pair[] = {2, plan.Of(kWall)[0].other};
  o->Set_VirtualNode_Coord_and_ClosestCellID(kWall, 1, pair, 0.0, -1.0, 0.0);
  EXPECT_EQ(plan.Of(kWall)[0].other, o.E().tag);
}

TEST(VirtualPoints, OnPartitionFacesHaveEAtTheHaloCell) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Ready o(plan, kPartition);
  for (int i = 1; i <= o->NFace; ++i) {
    o.Place(i);
    int const halo = o.FaceOf(i).other;
    EXPECT_TRUE(Stands(o.E(i), plan.centres[static_cast<std::size_t>(halo)], halo)) << i;
  }
}

TEST(VirtualPoints, AreTakenFromTheArgumentsNotFromTheFace) {
  Ready o(CubesOfAllGroups());
  int pair[] = {27, 1};
  o->Set_VirtualNode_Coord_and_ClosestCellID(kInner, 9, pair, 0.0, 0.0, 2.0);
  EXPECT_TRUE(SamePoint("P", {1.0, 1.5, 2.5}, o.P(9)));
  EXPECT_TRUE(SamePoint("E", {1.0, 1.5, 0.5}, o.E(9)));
}

// ------------------------------------------------------------------------------------------- stencils of method 4

// The two cubes: neighbours of 1 are 3, 2, 5, 6, 9, 10 and of 2 are 1, 4, 7, 8, 11, 12, in these orders.
TEST(VirtualPointStencil, HasThePairThenTheTiedCellsAndTheirNeighbours) {
  Ready o(TwoCubes());
  o.stages.FindStencils();
  EXPECT_EQ((Row{1, 2, 3, 5, 6, 9, 10, 4, 7, 8, 11, 12}), o.Stencil());
  EXPECT_EQ((std::vector<Row>{{1, 3, 2, 4, 5, 6, 7}, {2, 1, 8, 9, 10, 11, 12}}), o.Positions());
}

TEST(VirtualPointStencil, EntersATiedCellThatIsNotOfThePair) {
  Ready o(TwoCubes());
  o.P().SetData(-0.9, 0.0, 0.0, 3);  // neighbours of 3: 1 and four others
  o.E().SetData(0.5, 0.0, 0.0, 2);
  int pair[] = {1, 2};
  EXPECT_EQ(12, o->CountingVirtualNodeToCellconnectionNumber_By33(1, pair));
  EXPECT_EQ((Row{1, 2, 3}), Row(o->m_ppFaceCellConn[1] + 1, o->m_ppFaceCellConn[1] + 4));
  Row const rowP = o.Positions()[0];
  EXPECT_EQ((Row{1, 3}), Row(rowP.begin(), rowP.begin() + 2));
  EXPECT_EQ(6U, rowP.size());
}

// Position 2 is the pair's second cell, which E's list has first although E is tied to another cell.
TEST(VirtualPointStencil, HasTheCellOfThePairFirstOnItsSideWhateverTheVirtualPointIsTiedTo) {
  Ready o(TwoCubes());
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(0.9, 0.0, 0.0, 4);  // neighbours of 4: 2 and four others
  int pair[] = {1, 2};
  o->CountingVirtualNodeToCellconnectionNumber_By33(1, pair);
  Row const rowE = o.Positions()[1];
  ASSERT_LE(2U, rowE.size());
  EXPECT_EQ(2, rowE[0]);
  EXPECT_EQ(4, o.Stencil()[static_cast<std::size_t>(rowE[1]) - 1]);
}

TEST(VirtualPointStencil, EntersNoCellTwice) {
  for (Group const group : kGroups) {
    Ready o(SkewedCubesOfAllGroups(), group);
    o.stages.FindStencils();
    for (int i = 1; i <= o->NFace; ++i) {
      std::vector<Row> lists = o.Positions(i);
      lists.push_back(o.Stencil(i));
      for (Row& row : lists) {
        std::sort(row.begin(), row.end());
        EXPECT_EQ(row.end(), std::adjacent_find(row.begin(), row.end())) << group << " " << i;
      }
    }
  }
}

TEST(VirtualPointStencil, OfABoundaryFaceHasItsSideCellAtPosition2AndTheRowOfE) {
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    Ready o(SkewedCubesOfAllGroups(), group);
    o.stages.FindStencils();
    for (int i = 1; i <= o->NFace; ++i) {
      int const ghost = o.FaceOf(i).other;
      EXPECT_EQ(o.FaceOf(i).cv, o.Stencil(i)[0]);
      EXPECT_EQ(ghost, o.Stencil(i)[1]);
      Row const rowE = o.Positions(i)[1];
      EXPECT_EQ(2, rowE[0]);
      EXPECT_EQ(o->m_ppRBFCell33Conn[ghost][0] + 1, static_cast<int>(rowE.size()));
    }
  }
}

// The inlet's side cell (3) stands where cell 2 does. In the whole stencil cell 2 comes first and stays; in the
// list of P the cell 3 does, and its position is 0.
TEST(VirtualPointStencil, HasPosition0ForATwinThatTheWholeStencilDropped) {
  TestMesh plan = TwoCubes();
  plan.Of(kInlet)[0].centre = plan.centres[2];
  Ready o(plan);
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(0.5, 0.0, 0.0, 2);
  int pair[] = {1, 2};
  EXPECT_EQ(11, o->CountingVirtualNodeToCellconnectionNumber_By33(1, pair));
  EXPECT_EQ((Row{1, 2, 5, 6, 9, 10, 4, 7, 8, 11, 12}), o.Stencil());
  EXPECT_EQ((std::vector<Row>{{1, 0, 3, 4, 5, 6}, {2, 1, 7, 8, 9, 10, 11}}), o.Positions());
  for (int c = 0; c <= 12; ++c) {
    EXPECT_EQ(0, o->m_pMarkAll[c]);
    EXPECT_EQ(0, o->m_pMarkP[c]);
    EXPECT_EQ(0, o->m_pMarkE[c]);
  }
}

// Twice the same cell is a twin of itself: it keeps position 1, and the next cell has position 2.
TEST(VirtualPointStencil, TakesThePairWithoutATestAndDropsItsTwin) {
  Ready o(TwoCubes());
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(-0.5, 0.0, 0.0, 1);
  int pair[] = {1, 1};
  EXPECT_EQ(7, o->CountingVirtualNodeToCellconnectionNumber_By33(1, pair));
  EXPECT_EQ((Row{1, 3, 2, 5, 6, 9, 10}), o.Stencil());
  EXPECT_EQ((std::vector<Row>{{1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 7}}), o.Positions());
}

TEST(VirtualPointStencil, KeepsACellOneUnitInTheLastPlaceAway) {
  TestMesh plan = TwoCubes();
  plan.Of(kInlet)[0].centre = plan.centres[2];
  plan.Of(kInlet)[0].centre.x = std::nextafter(0.5, 1.0);
  Ready o(plan);
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(0.5, 0.0, 0.0, 2);
  int pair[] = {1, 2};
  EXPECT_EQ(12, o->CountingVirtualNodeToCellconnectionNumber_By33(1, pair));
}

TEST(VirtualPointStencil, MakesZeroedRowsOfValueAndNormalAndOfSlopesUnlessMethod4) {
  for (int const method : {4, 3}) {
    Ready o(TwoCubes(), kInner, {method, 1000.0, 20});
    o->Search_by_normal_virtual_node();
    for (int k = 0; k <= 12; ++k) {
      EXPECT_EQ(0.0, o->m_ppFaceFiCoef[1][k]);
      EXPECT_EQ(0.0, o->m_ppFaceDnCoef[1][k]);
    }
    if (method == 4) {
      EXPECT_EQ(nullptr, o->m_ppFaceGradCoef);
    } else {
      EXPECT_TRUE(SamePoint("slope", {}, o->m_ppFaceGradCoef[1][12]));
    }
  }
}

TEST(VirtualPointStencil, EqualsThePlainFormForEveryGroup) {
  for (Group const group : kGroups) {
    for (TestMesh const& plan : {CubesOfAllGroups(), SkewedCubesOfAllGroups()}) {
      Ready o(plan, group);
      o.stages.FindStencils();
      PlainFaceOperator plain = o.bed.Plain(group, {});
      plain.Collate();
      plain.FillTree();
      plain.FindStencils();
      EXPECT_TRUE(SameStencils(plain, o.bed.object)) << group;
      EXPECT_TRUE(SameStencilWork(plain, o.bed.object)) << group;
      EXPECT_EQ("", o.stages.PrintedSoFar());
    }
  }
}

// -------------------------------------------------------------------------------------- points within the cells

TEST(VirtualPointsInCells, StandHalfWayToTheNearestPlaneAhead) {
  Ready o(TwoCubes());
  o.PlaceInCells();
  EXPECT_TRUE(Stands(o.P(), {-0.5, 0.0, 0.0}, 1));
  EXPECT_TRUE(Stands(o.E(), {0.5, 0.0, 0.0}, 2));
}

TEST(VirtualPointsInCells, DoNotDependOnTheCentres) {
  TestMesh plan = TwoCubes();
  plan.centres[1] = {-0.75, 0.25, 0.0};
  plan.centres[2] = {0.25, 0.25, 0.0};
  plan.Of(kInner)[0].area = {8.0, 0.0, 0.0};
  Ready o(plan);
  o.PlaceInCells();
  EXPECT_TRUE(Stands(o.P(), {-0.5, 0.0, 0.0}, 1));
  EXPECT_TRUE(Stands(o.E(), {0.5, 0.0, 0.0}, 2));
}

/// The two cubes with one more wall face at cell 1, a triangle in the plane x = `x` far away from the ray; its
/// second vertex is `dy` away from the first.
TestMesh WithTriangleAhead(double x, double dy = 1.0) {
  TestMesh plan = TwoCubes();
  Face face;
  face.cv = 1;
  face.nodes = {plan.AddNode({x, 0.0, 0.0}), plan.AddNode({x, dy, 0.0}), plan.AddNode({x, 0.0, 1.0})};
  for (int const node : face.nodes) {
    Point& p = plan.nodes[static_cast<std::size_t>(node)];
    if (dy == 1.0) p.y += 40.0;
  }
  face.centre = {x, 40.0, 0.0};
  face.area = {1.0, 0.0, 0.0};
  face.other = plan.AddOuterCell(face.centre);
  plan.AddFace(kWall, face);
  plan.ListCellsAroundNodes();
  return plan;
}

TEST(VirtualPointsInCells, CountTheWholePlaneOfAFace) {
  Ready o(WithTriangleAhead(-0.25));
  o.PlaceInCells();
  EXPECT_TRUE(SamePoint("P", {-0.125, 0.0, 0.0}, o.P()));
}

TEST(VirtualPointsInCells, DoNotCountPlanesBehind) {
  Ready o(WithTriangleAhead(0.25));
  o.PlaceInCells();
  EXPECT_TRUE(SamePoint("P", {-0.5, 0.0, 0.0}, o.P()));
}

// A plane through the face's centre is 0 away, which is not ahead.
TEST(VirtualPointsInCells, DoNotCountAPlaneThroughTheFace) {
  Ready o(WithTriangleAhead(0.0));
  o.PlaceInCells();
  EXPECT_TRUE(SamePoint("P", {-0.5, 0.0, 0.0}, o.P()));
}

// The ray runs along -x, so the triangle's determinant is -dy exactly.
TEST(VirtualPointsInCells, TakeASmallDeterminantForAParallelPlaneFromMinus1e6UpTo1e6) {
  double const tiny = 1e-6;
  const struct {
    double determinant;
    bool counts;
  } cases[] = {{tiny, true},
               {std::nextafter(tiny, 0.0), false},
               {0.0, false},
               {-tiny, false},
               {-std::nextafter(tiny, 1.0), true}};
  for (auto const& c : cases) {
    Ready o(WithTriangleAhead(-0.25, -c.determinant));
    o.PlaceInCells();
    EXPECT_EQ(c.counts ? -0.125 : -0.5, o.P().x) << c.determinant;
  }
}

// The inlet's and the outlet's face have number 1, as the inner face has; they count all the same.
TEST(VirtualPointsInCells, LeaveOutTheFaceItselfButNotItsNumberInOtherGroups) {
  TestMesh plan = TwoCubes();
  plan.Of(kInner)[0].centre = {0.25, 0.0, 0.0};  // the face's own plane is ahead of P's ray, but is left out
  Ready o(plan);
  o.PlaceInCells();
  EXPECT_TRUE(SamePoint("P", {0.25 - 0.625, 0.0, 0.0}, o.P()));
  EXPECT_TRUE(SamePoint("E", {0.25 + 0.375, 0.0, 0.0}, o.E()));

  plan.Of(kInner)[0].centre = {-0.25, 0.0, 0.0};  // now it is ahead of E's ray
  Ready other(plan);
  other.PlaceInCells();
  EXPECT_TRUE(SamePoint("P", {-0.25 - 0.375, 0.0, 0.0}, other.P()));
  EXPECT_TRUE(SamePoint("E", {-0.25 + 0.625, 0.0, 0.0}, other.E()));
}

TEST(VirtualPointsInCells, OnOtherFacesThanInnerHaveEAtTheSecondCell) {
  TestMesh const plan = TwoCubes();
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    Ready o(plan, group);
    o.PlaceInCells();
    Face const& face = o.FaceOf(1);
    EXPECT_TRUE(Stands(o.E(), face.centre, face.other)) << group;
    EXPECT_EQ(face.cv, o.P().tag) << group;
  }
  Ready o(plan, kPartition);
  o.PlaceInCells();
  int const halo = o.FaceOf(1).other;
  EXPECT_TRUE(Stands(o.E(), plan.centres[static_cast<std::size_t>(halo)], halo));
}

TEST(VirtualPointsInCells, OnAWallStandHalfWayThroughTheCell) {
  Ready o(TwoCubes(), kWall);
  o.PlaceInCells(1);
  EXPECT_TRUE(Stands(o.P(1), {-0.5, 0.0, 0.0}, 1));
}

TEST(VirtualPointsInCells, WithoutAPlaneAheadAreFarAway) {
  TestMesh plan = TwoCubes();
  plan.cellFaces[1] = {{kInner, 1}};
  Ready o(plan);
  o.PlaceInCells();
  EXPECT_TRUE(SamePoint("P", {-0.5 * 99999999.0, 0.0, 0.0}, o.P()));
}

TEST(VirtualPointsInCells, EqualThePlainFormForEveryGroup) {
  for (Group const group : kGroups) {
    Ready o(SkewedCubesOfAllGroups(), group);
    PlainFaceOperator plain = o.bed.Plain(group, {});
    plain.Collate();
    for (int i = 1; i <= o->NFace; ++i) {
      Face const& face = o.FaceOf(i);
      plain.PlaceVirtualPointsInCells(i, {face.cv, face.other}, face.area);
      o.PlaceInCells(i);
      auto const& expected = plain.virtualPoints[static_cast<std::size_t>(i)];
      EXPECT_TRUE(Stands(o.P(i), expected[1].point, expected[1].cell)) << group << " " << i;
      EXPECT_TRUE(Stands(o.E(i), expected[2].point, expected[2].cell)) << group << " " << i;
    }
  }
}

// --------------------------------------------------------------------------------- stencils by vertices and cubes

/// Puts something into all marks that the next stencil must not take for its own.
void SpoilMarks(Ready& o) {
  for (int c = 1; c <= o.bed.host.NCell(); ++c) o->m_pMarkAll[c] = o->m_pMarkP[c] = o->m_pMarkE[c] = 5;
}

/// Whether the marks hold the positions of the face's stencil and nothing else.
void ExpectMarksOfStencil(Ready& o, int i) {
  std::vector<int> marks(static_cast<std::size_t>(o.bed.host.NCell()) + 1, 0);
  for (int k = o->m_ppFaceCellConn[i][0]; k >= 1; --k)
    marks[static_cast<std::size_t>(o->m_ppFaceCellConn[i][k])] = k;
  for (int c = 1; c <= o.bed.host.NCell(); ++c)
    EXPECT_EQ(marks[static_cast<std::size_t>(c)], o->m_pMarkAll[c]) << c;
}

/// Whether the marks of a side are 1, 2, 3... along its list and 0 elsewhere.
void ExpectMarksOfSide(Ready& o, Row const& positions, int const* marks) {
  std::vector<int> expected(static_cast<std::size_t>(o.bed.host.NCell()) + 1, 0);
  int number = 0;
  for (int const position : positions)
    expected[static_cast<std::size_t>(o->m_ppFaceCellConn[1][position])] = ++number;
  for (int c = 1; c <= o.bed.host.NCell(); ++c)
    EXPECT_EQ(expected[static_cast<std::size_t>(c)], marks[c]) << c;
}

TEST(VirtualPointStencilByVertices, HasThePairAndTheCellsAroundTheTiedCellsVertices) {
  TestMesh plan = TwoCubes();
  for (auto& row : plan.nodeCells) row.clear();
  plan.cellNodes[1] = {2, 1};
  plan.cellNodes[2] = {2, 3};
  plan.nodeCells[2] = {9, 2};  // all three are boundary nodes: the interior cells are added
  plan.nodeCells[1] = {3, 9};
  plan.nodeCells[3] = {4};
  Ready o(plan);
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(0.5, 0.0, 0.0, 2);
  SpoilMarks(o);
  int pair[] = {1, 2};
  EXPECT_EQ(5, o->CountingVirtualNodeToCellconnectionNumber(1, pair));
  EXPECT_EQ((Row{1, 2, 9, 3, 4}), o.Stencil());
  EXPECT_EQ((std::vector<Row>{{3, 2, 1, 4}, {3, 2, 1, 5}}), o.Positions());
}

TEST(VirtualPointStencilByVertices, HasATiedCellInItsListOnlyIfAVertexNamesIt) {
  TestMesh plan = TwoCubes();
  for (auto& row : plan.nodeCells) row.clear();  // no vertex names a cell beyond the boundary
  Ready o(plan);
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(-1.0, 0.0, 0.0, 3);
  int pair[] = {1, 2};
  EXPECT_EQ(2, o->CountingVirtualNodeToCellconnectionNumber(1, pair));
  EXPECT_EQ((Row{1, 2}), o.Stencil());
  EXPECT_EQ((std::vector<Row>{{1, 2}, {1}}), o.Positions());
}

// Twice the same cell stands at both positions; what refers to it refers to the later.
TEST(VirtualPointStencilByVertices, TakesThePairWithoutATest) {
  TestMesh plan = TwoCubes();
  for (auto& row : plan.nodeCells) row.clear();
  Ready o(plan);
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(0.5, 0.0, 0.0, 2);
  int pair[] = {1, 1};
  EXPECT_EQ(3, o->CountingVirtualNodeToCellconnectionNumber(1, pair));
  EXPECT_EQ((Row{1, 1, 2}), o.Stencil());
  EXPECT_EQ((std::vector<Row>{{2, 3}, {2, 3}}), o.Positions());
}

TEST(VirtualPointStencilByVertices, KeepsCellsAtOnePoint) {
  TestMesh plan = TwoCubes();
  plan.Of(kInlet)[0].centre = plan.centres[2];
  Ready o(plan);
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(0.5, 0.0, 0.0, 2);
  int pair[] = {1, 2};
  EXPECT_EQ(12, o->CountingVirtualNodeToCellconnectionNumber(1, pair));
}

TEST(VirtualPointStencilByVertices, LeavesItsMarksStandingAndMakesNoSlopes) {
  Ready o(TwoCubes(), kInner, {3, 1000.0, 20});
  o.P().SetData(-0.5, 0.0, 0.0, 1);
  o.E().SetData(0.5, 0.0, 0.0, 2);
  SpoilMarks(o);
  int pair[] = {1, 2};
  o->CountingVirtualNodeToCellconnectionNumber(1, pair);
  ExpectMarksOfStencil(o, 1);
  ExpectMarksOfSide(o, o.Positions()[0], o->m_pMarkP);
  ExpectMarksOfSide(o, o.Positions()[1], o->m_pMarkE);
  EXPECT_EQ(nullptr, o->m_ppFaceGradCoef[1]);
  for (int k = 0; k <= o->m_ppFaceCellConn[1][0]; ++k) {
    EXPECT_EQ(0.0, o->m_ppFaceFiCoef[1][k]);
    EXPECT_EQ(0.0, o->m_ppFaceDnCoef[1][k]);
  }
}

TEST(VirtualPointStencilByVertices, EqualsThePlainFormForEveryGroup) {
  for (Group const group : kGroups) {
    Ready o(SkewedCubesOfAllGroups(), group);
    PlainFaceOperator plain = o.bed.Plain(group, {});
    plain.Collate();
    plain.FillTree();
    for (int i = 1; i <= o->NFace; ++i) {
      int pair[] = {o.FaceOf(i).cv, o.FaceOf(i).other};
      o.Place(i);
      plain.PlaceVirtualPoints(i, {pair[0], pair[1]}, o.FaceOf(i).area);
      o->CountingVirtualNodeToCellconnectionNumber(i, pair);
      plain.StencilFromVerticesOfTiedCells(i, {pair[0], pair[1]});
      EXPECT_EQ(plain.stencils[static_cast<std::size_t>(i)], o.Stencil(i)) << group << " " << i;
      EXPECT_EQ(plain.rows[static_cast<std::size_t>(i)], o.Positions(i)) << group << " " << i;
    }
  }
}

// Unit cubes, the face between 13 and 14: A2 = (3, 1.5, 1.5) is 1.5 from cell 14 and B2 = (-1, 1.5, 1.5) as far
// from cell 13. The cubes of that half-width around P = (0.5, 1.5, 1.5) and E = (1.5, 1.5, 1.5) hold the cells
// with x in [-1, 2] and [0, 3], all but the halo cells.
TEST(VirtualPointStencilByCubes, HasThePairAndTheCellsOfACubeAroundEachPoint) {
  TestMesh const plan = CubesOfAllGroups();
  Ready o(plan);
  o.Place(9);
  int pair[] = {13, 14};
  std::string const text =
      Printed([&] { EXPECT_EQ(72, o->CountingVirtualNodeToCellBySearchNumber(9, pair, 7.0, 0.0, 0.0)); });
  Row const stencil = o.Stencil(9);
  EXPECT_EQ((Row{13, 14}), Row(stencil.begin(), stencil.begin() + 2));
  for (Face const& face : plan.Of(kPartition))
    EXPECT_EQ(0, std::count(stencil.begin(), stencil.end(), face.other));
  // Around P 18 interior cells, 9 at the inlet and 6 at each of three sides; around E all 27, 9 and 9, and 27.
  EXPECT_EQ(45U, o.Positions(9)[0].size());
  EXPECT_EQ(72U, o.Positions(9)[1].size());
  EXPECT_EQ("iface_VP[9] = 45, iface_VE[9] = 72\n", text);
}

TEST(VirtualPointStencilByCubes, FlushesItsLine) {
  Ready o(CubesOfAllGroups());
  o.Place(9);
  int pair[] = {13, 14};
  std::string arrived;
  {
    FlushedOutput const output;
    o->CountingVirtualNodeToCellBySearchNumber(9, pair, 7.0, 0.0, 0.0);
    arrived = output.Arrived();
  }
  EXPECT_EQ("iface_VP[9] = 45, iface_VE[9] = 72\n", arrived);
}

TEST(VirtualPointStencilByCubes, LeavesItsMarksStandingAndMakesNoSlopes) {
  Ready o(TwoCubes(), kInner, {3, 1000.0, 20});
  o.Place();
  SpoilMarks(o);
  int pair[] = {1, 2};
  Printed([&] { o->CountingVirtualNodeToCellBySearchNumber(1, pair, 1.0, 0.0, 0.0); });
  ExpectMarksOfStencil(o, 1);
  ExpectMarksOfSide(o, o.Positions()[0], o->m_pMarkP);
  ExpectMarksOfSide(o, o.Positions()[1], o->m_pMarkE);
  EXPECT_EQ(nullptr, o->m_ppFaceGradCoef[1]);
}

TEST(VirtualPointStencilByCubes, EqualsThePlainFormForEveryGroup) {
  for (Group const group : kGroups) {
    Ready o(SkewedCubesOfAllGroups(), group);
    PlainFaceOperator plain = o.bed.Plain(group, {});
    plain.Collate();
    plain.FillTree();
    for (int i = 1; i <= o->NFace; ++i) {
      int pair[] = {o.FaceOf(i).cv, o.FaceOf(i).other};
      Point const n = o.FaceOf(i).area;
      o.Place(i);
      plain.PlaceVirtualPoints(i, {pair[0], pair[1]}, n);
      Printed([&] { o->CountingVirtualNodeToCellBySearchNumber(i, pair, n.x, n.y, n.z); });
      plain.StencilFromCubes(i, {pair[0], pair[1]}, n);
      EXPECT_EQ(plain.stencils[static_cast<std::size_t>(i)], o.Stencil(i)) << group << " " << i;
      EXPECT_EQ(plain.rows[static_cast<std::size_t>(i)], o.Positions(i)) << group << " " << i;
    }
  }
}

}  // namespace
}  // namespace zyn_test::virtual_nodes_test

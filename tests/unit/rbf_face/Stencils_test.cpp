#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "tests/support/compare/SameBits.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"
#include "tests/support/watch/FlushedOutput.h"

// The removal of cells at one point, and the stencils of methods 1 to 3.

namespace zyn_test::stencils_test {
namespace {

using Row = std::vector<int>;

struct WithStencils {
  WithStencils(TestMesh const& plan, int faceType, FaceSettings const& settings)
      : bed(plan), stages(bed.object, faceType, settings) {
    stages.FindStencils();
  }
  CZynFaceRBFInternalObject* operator->() { return &bed.object; }
  Row Stencil(int i) { return RowOf(bed.object.m_ppFaceCellConn[i]); }
  std::set<int> Members(int i) {
    Row const row = Stencil(i);
    return {row.begin(), row.end()};
  }

  FaceBed bed;
  Stages stages;
};

// ----------------------------------------------------------------------------------------- cells at one point

/// Cells 1 to 12 of the two cubes, at points that a test sets.
struct Twins {
  Twins() : bed(TwoCubes()), stages(bed.object, kInner, {}) {
    stages.Collate();
    for (int c = 1; c <= 12; ++c) Put(c, 1.0 * c, 0.5, 0.25);
  }
  void Put(int c, double x, double y, double z) { bed.object.m_pNodeTable[c].SetData(x, y, z, c); }
  int Remove(int n) { return bed.object.Delete_Duplicate_Coordinate(n, list, marks.data()); }

  FaceBed bed;
  Stages stages;
  Row list, marks = Row(13, 99);
};

TEST(FaceDuplicates, OfAPointTheFirstInTheListStays) {
  Twins t;
  t.Put(7, 3.0, 0.5, 0.25);  // where cell 3 stands
  t.list = {0, 7, 5, 3, 2};
  EXPECT_EQ(3, t.Remove(4));
  EXPECT_EQ((Row{7, 5, 2}), Row(t.list.begin() + 1, t.list.begin() + 4));
  t.list = {0, 3, 5, 7, 2};
  EXPECT_EQ(3, t.Remove(4));
  EXPECT_EQ((Row{3, 5, 2}), Row(t.list.begin() + 1, t.list.begin() + 4));
}

TEST(FaceDuplicates, OneUnitInTheLastPlaceIsAnotherPoint) {
  Twins t;
  double const x = std::nextafter(3.0, 4.0), y = std::nextafter(0.5, 0.0), z = std::nextafter(0.25, 1.0);
  t.Put(7, x, 0.5, 0.25);
  t.Put(8, 3.0, y, 0.25);
  t.Put(9, 3.0, 0.5, z);
  t.list = {0, 3, 7, 8, 9};
  EXPECT_EQ(4, t.Remove(4));
}

TEST(FaceDuplicates, ZerosOfBothSignsAreOnePoint) {
  Twins t;
  t.Put(1, 0.0, -0.0, 0.0);
  t.Put(2, -0.0, 0.0, -0.0);
  t.list = {0, 1, 2};
  EXPECT_EQ(1, t.Remove(2));
}

TEST(FaceDuplicates, PointsThatAreNoNumbersAreAllDifferent) {
  Twins t;
  t.Put(1, std::nan(""), 0.0, 0.0);
  t.Put(2, std::nan(""), 0.0, 0.0);
  t.list = {0, 1, 2};
  EXPECT_EQ(2, t.Remove(2));
}

// They have a number in common by which most points are told apart.
TEST(FaceDuplicates, PointsWithOneKeyAreNoTwins) {
  Twins t;
  t.Put(1, 0.7320508, 0.0, 0.0);
  t.Put(2, 0.0, 1.0, 0.0);
  t.Put(3, HUGE_VAL, 0.0, 0.0);
  t.Put(4, HUGE_VAL, -HUGE_VAL, 0.0);
  t.Put(5, HUGE_VAL, -HUGE_VAL, 0.0);
  t.list = {0, 1, 2, 3, 4, 5};
  EXPECT_EQ(4, t.Remove(5));
  EXPECT_EQ((Row{1, 2, 3, 4}), Row(t.list.begin() + 1, t.list.begin() + 5));
}

TEST(FaceDuplicates, AnEntry0IsDropped) {
  Twins t;
  t.list = {0, 3, 0, 2};
  EXPECT_EQ(2, t.Remove(3));
  EXPECT_EQ((Row{3, 2}), Row(t.list.begin() + 1, t.list.begin() + 3));
}

TEST(FaceDuplicates, MarksAreTheNewPositionsAnd0ForTheDropped) {
  Twins t;
  for (int const c : {5, 6, 8}) t.Put(c, 4.0, 0.5, 0.25);
  t.list = {0, 2, 4, 5, 3, 6, 8, 9};
  EXPECT_EQ(4, t.Remove(7));
  EXPECT_EQ(1, t.marks[2]);
  EXPECT_EQ(2, t.marks[4]);
  EXPECT_EQ(3, t.marks[3]);
  EXPECT_EQ(4, t.marks[9]);
  for (int const c : {5, 6, 8}) EXPECT_EQ(0, t.marks[static_cast<std::size_t>(c)]);
  for (int const c : {1, 7, 10}) EXPECT_EQ(99, t.marks[static_cast<std::size_t>(c)]) << "not in the list";
}

TEST(FaceDuplicates, EntriesBehindTheNewCountKeepTheirContent) {
  Twins t;
  t.Put(4, 3.0, 0.5, 0.25);
  t.list = {0, 3, 4, 5, 6, 4};
  EXPECT_EQ(3, t.Remove(4));
  EXPECT_EQ((Row{0, 3, 5, 6, 6, 4}), t.list) << "the last is behind the n that counts";
}

TEST(FaceDuplicates, OfAnEmptyListAreNone) {
  Twins t;
  t.list = {0};
  EXPECT_EQ(0, t.Remove(0));
}

// ------------------------------------------------------------------------------------------- methods 1 and 2

// Unit cubes; this face stands between the cells 13 and 14 with its centre at (1, 1.5, 1.5), and the mean distance
// is 1. The first cube around it, [0, 2] x [0.5, 2.5]^2, holds the cells with x = 0.5 and 1.5 and the inlet's side
// cells at x = 0; the second holds everything.
constexpr int kMiddle = 9;

int MiddleFace(TestMesh const& plan) {
  for (std::size_t f = 0; f < plan.Of(kInner).size(); ++f)
    if (plan.Of(kInner)[f].cv == 13 && plan.Of(kInner)[f].other == 14) return static_cast<int>(f) + 1;
  return 0;
}

TEST(FaceStencilByNode, Method1TakesTheWholeFirstCubeThatHoldsEnough) {
  TestMesh const plan = CubesOfAllGroups();
  ASSERT_EQ(kMiddle, MiddleFace(plan));
  std::set<int> expected;
  for (int c = 1; c <= 27; ++c)
    if (c % 3 != 0) expected.insert(c);
  for (Face const& face : plan.Of(kInlet)) expected.insert(face.other);
  for (int const number : {1, 20, 27}) {
    WithStencils o(plan, kInner, {1, 1000.0, number});
    EXPECT_EQ(27, o->m_ppFaceCellConn[kMiddle][0]) << number;
    EXPECT_EQ(expected, o.Members(kMiddle)) << number;
    EXPECT_EQ(1.0, o->m_pFaceSupport[kMiddle]) << number;
  }
}

TEST(FaceStencilByNode, Method1GrowsTheCubeByAMeanDistance) {
  TestMesh const plan = CubesOfAllGroups();
  for (int const number : {28, 80, 81}) {
    WithStencils o(plan, kInner, {1, 1000.0, number});
    EXPECT_EQ(81, o->m_ppFaceCellConn[kMiddle][0]) << number;
    EXPECT_EQ(2.0, o->m_pFaceSupport[kMiddle]) << number;
  }
}

TEST(FaceStencilByNode, Method1HasMembersOutsideTheSphereOfItsSupport) {
  WithStencils o(CubesOfAllGroups(), kInner, {1, 1000.0, 20});
  IBCnode const& corner = o->m_pNodeTable[1];  // at (0.5, 0.5, 0.5), sqrt(2.25) away
  ASSERT_EQ(0.5, corner.z);
  EXPECT_EQ(1U, o.Members(kMiddle).count(1));
  EXPECT_GT(std::sqrt(2.25), o->m_pFaceSupport[kMiddle]);
}

TEST(FaceStencilByNode, Method2TakesTheNearestOfThatCube) {
  TestMesh const plan = CubesOfAllGroups();
  WithStencils two(plan, kInner, {2, 1000.0, 2});
  EXPECT_EQ((std::set<int>{13, 14}), two.Members(kMiddle));
  EXPECT_EQ(0.5, two->m_pFaceSupport[kMiddle]);
  WithStencils three(plan, kInner, {2, 1000.0, 3});
  int const inlet = plan.Of(kInlet)[4].other;  // at (0, 1.5, 1.5)
  EXPECT_EQ((std::set<int>{13, 14, inlet}), three.Members(kMiddle));
  EXPECT_EQ(inlet, three.Stencil(kMiddle)[2]);
  EXPECT_EQ(1.0, three->m_pFaceSupport[kMiddle]);
}

TEST(FaceStencilByNode, Method2SortsByDistanceAndMeasuresTheLastThatItKeeps) {
  for (int const number : {1, 5, 12, 20, 40}) {
    WithStencils o(SkewedCubesOfAllGroups(), kInner, {2, 1000.0, number});
    for (int i = 1; i <= o->NFace; ++i) {
      Row const stencil = o.Stencil(i);
      ASSERT_EQ(number, static_cast<int>(stencil.size()));
      double last = 0.0;
      for (int const c : stencil) {
        IBCnode const& p = o->m_pNodeTable[c];
        double const dx = p.x - o->m_FaceX[i], dy = p.y - o->m_FaceY[i], dz = p.z - o->m_FaceZ[i];
        double const r = std::sqrt(dy * dy + dx * dx + dz * dz);
        EXPECT_LE(last, r);
        last = r;
      }
      EXPECT_TRUE(SameBits(last, o->m_pFaceSupport[i]));
    }
  }
}

TEST(FaceStencilByNode, LeavesOutAFacesOwnCellThatItDoesNotFind) {
  WithStencils o(CubesOfAllGroups(), kInner, {2, 1000.0, 1});
  EXPECT_EQ(1, o->m_ppFaceCellConn[kMiddle][0]);
  EXPECT_EQ(0.5, o->m_pFaceSupport[kMiddle]);
}

TEST(FaceStencilByNode, KeepsCellsAtOnePoint) {
  TestMesh plan = CubesOfAllGroups();
  plan.centres[13] = plan.centres[14];
  WithStencils o(plan, kInner, {2, 1000.0, 2});
  EXPECT_EQ((std::set<int>{13, 14}), o.Members(kMiddle));
}

TEST(FaceStencilByNode, StopsGrowingWhenItsCubeHoldsAllCells) {
  for (int const number : {13, 20, 1000000}) {
    WithStencils one(TwoCubes(), kInner, {1, 1000.0, number}), two(TwoCubes(), kInner, {2, 1000.0, number});
    EXPECT_EQ(12, one->m_ppFaceCellConn[1][0]) << number;
    EXPECT_EQ(12, two->m_ppFaceCellConn[1][0]) << number;
    EXPECT_EQ(12U, one.Members(1).size()) << number;
    EXPECT_EQ(1.0, one->m_pFaceSupport[1]) << number;
  }
}

// Ten cells in a row: the farthest are reached only by the ninth or tenth cube.
TEST(FaceStencilByNode, HoldsAllCellsOfAMeshThatIsLongInAnyDirection) {
  std::vector<double> row;
  for (int n = 0; n <= 10; ++n) row.push_back(n);
  std::vector<double> const one = {0.0, 1.0};
  Sides const walls = {kWall, kWall, kWall, kWall, kWall, kWall};
  for (TestMesh const& plan :
       {Box(row, one, one, walls), Box(one, row, one, walls), Box(one, one, row, walls)}) {
    WithStencils o(plan, kInner, {1, 1000.0, 1000});
    for (int const i : {1, 5, 9}) {
      EXPECT_EQ(52, o->m_ppFaceCellConn[i][0]) << i;
      EXPECT_EQ(i == 5 ? 5.0 : 9.0, o->m_pFaceSupport[i]) << i;
    }
  }
}

TEST(FaceStencilByNode, TakesAllCellsOfAMeshWithoutInnerFaces) {
  TestMesh const plan = Box({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0});
  for (int const method : {1, 2}) {
    WithStencils o(plan, kWall, {method, 1000.0, 4});
    EXPECT_EQ(method == 1 ? 7 : 4, o->m_ppFaceCellConn[1][0]);
  }
}

// As far as the farthest bound of the points: from the wall at y = 0 to the halo cell at y = 1.5.
TEST(FaceStencilByNode, MeasuresTheSupportOfAMeshWithoutInnerFacesByItsExtent) {
  WithStencils o(Box({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0}), kWall, {1, 1000.0, 4});
  EXPECT_EQ(1.5, o->m_pFaceSupport[1]);
}

TEST(FaceStencilByNode, TakesAllCellsWhenTheMeanDistanceIs0) {
  TestMesh plan = TwoCubes();
  plan.centres[2] = plan.centres[1];
  WithStencils o(plan, kInner, {1, 1000.0, 4});
  EXPECT_EQ(12, o->m_ppFaceCellConn[1][0]);
}

TEST(FaceStencilByNode, OfNumber0IsEmptyInMethod2) {
  for (int const number : {0, -5}) {
    WithStencils o(TwoCubes(), kInner, {2, 1000.0, number});
    EXPECT_EQ(0, o->m_ppFaceCellConn[1][0]) << number;
    EXPECT_EQ(0.0, o->m_pFaceSupport[1]) << number;
  }
}

TEST(FaceStencilByNode, OfNumber0IsTheFirstCubeInMethod1) {
  WithStencils o(CubesOfAllGroups(), kInner, {1, 1000.0, 0});
  EXPECT_EQ(27, o->m_ppFaceCellConn[kMiddle][0]);
}

// A cube of half-width 1 around the target holds no point.
TEST(FaceStencilByNode, MayBeEmptyInMethod1) {
  TestMesh plan = CubesOfAllGroups();
  plan.Of(kInner)[kMiddle - 1].centre = {40.0, 1.5, 1.5};
  WithStencils o(plan, kInner, {1, 1000.0, 0});
  EXPECT_EQ(0, o->m_ppFaceCellConn[kMiddle][0]);
}

TEST(FaceStencilByNode, MakesZeroedRowsOfValueAndSlopeAlone) {
  for (int const method : {1, 2}) {
    WithStencils o(SkewedCubesOfAllGroups(), kInner, {method, 1000.0, 9});
    for (int i = 1; i <= o->NFace; ++i) {
      for (int k = 0; k <= o->m_ppFaceCellConn[i][0]; ++k) {
        EXPECT_EQ(0.0, o->m_ppFaceFiCoef[i][k]);
        EXPECT_TRUE(SamePoint("slope", {}, o->m_ppFaceGradCoef[i][k]));
      }
      EXPECT_EQ(nullptr, o->m_ppFaceDnCoef[i]);
      EXPECT_EQ(nullptr, o->m_ppFaceLnods[i]);
      EXPECT_EQ(nullptr, o->m_pFaceRows[i].m_ppRow);
    }
    EXPECT_EQ("", o.stages.PrintedSoFar());
  }
}

TEST(FaceStencilByNode, EqualsThePlainFormForEveryGroup) {
  for (int const method : {1, 2}) {
    for (int const number : {3, 20}) {
      for (Group const group : kGroups) {
        for (TestMesh const& plan : {CubesOfAllGroups(), SkewedCubesOfAllGroups()}) {
          WithStencils o(plan, group, {method, 1000.0, number});
          PlainFaceOperator plain = o.bed.Plain(group, {method, 1000.0, number});
          plain.Collate();
          plain.FillTree();
          plain.FindStencils();
          EXPECT_TRUE(SameStencils(plain, o.bed.object)) << method << " " << group;
          EXPECT_TRUE(SameStencilWork(plain, o.bed.object)) << method << " " << group;
        }
      }
    }
  }
}

// ---------------------------------------------------------------------------------------------------- method 3

// The inner face of the two cubes has the vertices 2, 5, 8, 11, each with six of the cells 1, 2 and 5 to 12 around
// it.
TEST(FaceStencilByTopology, HasTheTwoCellsAtPositions1And2AndEachCellOnce) {
  WithStencils o(TwoCubes(), kInner, {3, 1000.0, 20});
  Row const stencil = o.Stencil(1);
  EXPECT_EQ(10U, stencil.size());
  EXPECT_EQ(1, stencil[0]);
  EXPECT_EQ(2, stencil[1]);
  EXPECT_EQ((std::set<int>{1, 2, 5, 6, 7, 8, 9, 10, 11, 12}), o.Members(1));
}

TEST(FaceStencilByTopology, FollowsTheVerticesAndTheirCells) {
  TestMesh plan = TwoCubes();
  plan.Of(kInner)[0].nodes = {8, 2, 5};
  plan.nodeCells[8] = {7, 1, 2, 5};
  plan.nodeCells[2] = {9, 2, 1, 7};
  plan.nodeCells[5] = {1, 2, 6};
  WithStencils o(plan, kInner, {3, 1000.0, 20});
  EXPECT_EQ((Row{1, 2, 7, 5, 9, 6}), o.Stencil(1));
  EXPECT_EQ((Row{8, 2, 5}), RowOf(o->m_ppFaceLnods[1]));
  std::vector<Row> const positions = {{3, 1, 2, 4}, {5, 2, 1, 3}, {1, 2, 6}};
  EXPECT_EQ(positions, RowsOf(o->m_pFaceRows[1]));
}

TEST(FaceStencilByTopology, TakesTheCellsAndVerticesOfEveryGroup) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  for (Group const group : kGroups) {
    WithStencils o(plan, group, {3, 1000.0, 20});
    for (int i = 1; i <= o->NFace; ++i) {
      Face const& face = plan.Of(group)[static_cast<std::size_t>(i - 1)];
      EXPECT_EQ(face.cv, o.Stencil(i)[0]) << group << " " << i;
      EXPECT_EQ(face.other, o.Stencil(i)[1]) << group << " " << i;
      EXPECT_EQ(face.nodes, RowOf(o->m_ppFaceLnods[i])) << group << " " << i;
    }
  }
}

TEST(FaceStencilByTopology, MeasuresTheFarthestOfCellsAndVertices) {
  WithStencils vertices(TwoCubes(), kInner, {3, 1000.0, 20});
  EXPECT_TRUE(SameBits(std::sqrt(0.5), vertices->m_pFaceSupport[1]));
  for (std::size_t const cell : {1U, 2U}) {
    TestMesh plan = TwoCubes();
    plan.centres[cell] = {0.0, cell == 1 ? -3.0 : 3.0, 0.0};
    WithStencils cells(plan, kInner, {3, 1000.0, 20});
    EXPECT_EQ(3.0, cells->m_pFaceSupport[1]);
  }
}

TEST(FaceStencilByTopology, OfAPartitionFaceIsMeasuredFromTheHaloCell) {
  WithStencils o(TwoCubes(), kPartition, {3, 1000.0, 20});
  EXPECT_EQ(1.0, o->m_FaceY[1]);
  EXPECT_EQ(1.0, o->m_pFaceSupport[1]);  // from (-0.5, 1, 0) to the cell at (-0.5, 0, 0)
}

TEST(FaceStencilByTopology, MakesZeroedRowsOfValueSlopeAndNormal) {
  WithStencils o(SkewedCubesOfAllGroups(), kWall, {3, 1000.0, 9});
  for (int i = 1; i <= o->NFace; ++i) {
    for (int k = 0; k <= o->m_ppFaceCellConn[i][0]; ++k) {
      EXPECT_EQ(0.0, o->m_ppFaceFiCoef[i][k]);
      EXPECT_EQ(0.0, o->m_ppFaceDnCoef[i][k]);
      EXPECT_TRUE(SamePoint("slope", {}, o->m_ppFaceGradCoef[i][k]));
    }
  }
}

TEST(FaceStencilByTopology, SaysAtEachFaceWhereItIs) {
  WithStencils o(TwoCubes(), kWall, {3, 1000.0, 20});
  EXPECT_EQ(
      "Search topology relationship on (1 face/4 Total face)\r"
      "Search topology relationship on (2 face/4 Total face)\r"
      "Search topology relationship on (3 face/4 Total face)\r"
      "Search topology relationship on (4 face/4 Total face)\r",
      o.stages.PrintedSoFar());
}

TEST(FaceStencilByTopology, FlushesWhatItSays) {
  FaceBed bed(TwoCubes());
  Stages stages(bed.object, kInner, {3, 1000.0, 20});
  stages.FillTree();
  std::string arrived;
  {
    FlushedOutput const output;
    bed.object.Search_by_Topology_control();
    arrived = output.Arrived();
  }
  EXPECT_EQ("Search topology relationship on (1 face/1 Total face)\r", arrived);
}

TEST(FaceStencilByTopology, EqualsThePlainFormForEveryGroup) {
  for (Group const group : kGroups) {
    for (bool const outerOnly : {false, true}) {
      TestMesh plan = SkewedCubesOfAllGroups();
      if (outerOnly) plan.ListCellsAroundNodes(TestMesh::AtBoundaryNodes::OuterCellsOnly);
      WithStencils o(plan, group, {3, 1000.0, 20});
      PlainFaceOperator plain = o.bed.Plain(group, {3, 1000.0, 20});
      plain.Collate();
      plain.FillTree();
      plain.FindStencils();
      EXPECT_TRUE(SameStencils(plain, o.bed.object)) << group;
      EXPECT_TRUE(SameStencilWork(plain, o.bed.object)) << group;
    }
  }
}

/// An operator with its tables of connectivity but no stencils, method 3.
struct BeforeStencils {
  BeforeStencils() : bed(TwoCubes()), stages(bed.object, kInner, {3, 1000.0, 20}) { stages.FillTree(); }
  FaceBed bed;
  Stages stages;
};

// Twice the same cell stands at both positions; what refers to it refers to the later.
TEST(FaceStencilByTopology, TakesTheTwoCellsWithoutATest) {
  BeforeStencils o;
  int pair[] = {2, 2}, vertices[] = {1, 2};
  EXPECT_EQ(7, o.bed.object.CountingNodeToCellconnectionNumber(1, pair, vertices));
  EXPECT_EQ((Row{2, 2, 1, 5, 7, 9, 11}), RowOf(o.bed.object.m_ppFaceCellConn[1]));
  EXPECT_EQ((std::vector<Row>{{3, 2, 4, 5, 6, 7}}), RowsOf(o.bed.object.m_pFaceRows[1]));
}

TEST(FaceStencilByTopology, LeavesTheMarksClear) {
  BeforeStencils o;
  int pair[] = {1, 2}, vertices[] = {4, 2, 5, 8, 11};
  o.bed.object.CountingNodeToCellconnectionNumber(1, pair, vertices);
  for (int c = 0; c <= 12; ++c) EXPECT_EQ(0, o.bed.object.m_pMarkAll[c]);
}

TEST(FaceStencilByTopology, OfNoVerticesIsThePair) {
  BeforeStencils o;
  int pair[] = {2, 1}, vertices[] = {0};
  EXPECT_EQ(2, o.bed.object.CountingNodeToCellconnectionNumber(1, pair, vertices));
  EXPECT_EQ((Row{2, 1}), RowOf(o.bed.object.m_ppFaceCellConn[1]));
  EXPECT_EQ(Row{}, RowOf(o.bed.object.m_ppFaceLnods[1]));
}

}  // namespace
}  // namespace zyn_test::stencils_test

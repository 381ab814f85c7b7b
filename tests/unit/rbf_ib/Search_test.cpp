#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"

// The stencils of the three methods, with the search tree of the reference host.

namespace zyn_test::search_test {
namespace {

using Object = CZynIBRBFInternalObject;
using List = std::vector<int>;

List Ascending(List list) {
  std::sort(list.begin(), list.end());
  return list;
}

/// Cells in a row along x at 0, 1, 2, ..., so that the mean distance is 1.
TestMesh Row(int n) {
  std::vector<Point> centres;
  for (int c = 0; c < n; ++c) centres.push_back({1.0 * c, 0, 0});
  return LooseCells(centres);
}

/// All steps up to the search, with one point.
struct Searched : PointBed {
  Searched(TestMesh const& mesh, Array marks, Point point, int method, int number) : PointBed(mesh) {
    PointArrays points({point});
    SetUpToTree(marks, 1);
    EXPECT_EQ(
        0, object.SearchIBADTress(points.x.Data(), points.y.Data(), points.z.Data(), method, 77.0, number));
  }
  Searched(TestMesh const& mesh, Point point, int method, int number)
      : Searched(mesh, AllUsable(mesh.NCell()), point, method, number) {}

  double Support() const { return object.m_pIBSupportLength[1]; }
};

// -------------------------------------------------------------------------------------------- methods 1 and 2

// Half-width 2 reaches cells 0.3, 1.3, 0.7, 1.7 away.
TEST(PointSearch, Method1KeepsAllCellsOfTheFirstCubeThatHoldsEnough) {
  Searched const s(Row(9), {3.3, 0, 0}, 1, 3);
  EXPECT_EQ((List{3, 4, 5, 6}), Ascending(s.Stencil(1)));
  EXPECT_EQ(2.0, s.Support()) << "half the edge of the cube, not a distance";
}

TEST(PointSearch, Method2KeepsTheNearestOfThatCubeInOrder) {
  Searched const s(Row(9), {3.3, 0, 0}, 2, 3);
  EXPECT_EQ((List{4, 5, 3}), s.Stencil(1));
  EXPECT_EQ(std::fabs(3.3 - 2.0), s.Support()) << "the distance of the last one kept";
}

TEST(PointSearch, Method2KeepsExactlyTheNumberThatIsWanted) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  for (int number = 1; number <= 30; ++number) {
    Point const p{1.3, 1.1, 1.7};
    Searched const s(mesh, InteriorUsable(mesh), p, 2, number);
    int const n = std::min(number, mesh.nInnerCells);
    ASSERT_EQ(n, s.object.m_ppIBConn[1][0]);
    std::vector<double> distances;
    for (int const c : s.Stencil(1)) {
      Point const& q = mesh.Centre(c);
      double const dx = p.x - q.x, dy = p.y - q.y, dz = p.z - q.z;
      distances.push_back(std::sqrt(dy * dy + dx * dx + dz * dz));
    }
    EXPECT_EQ(distances.back(), s.Support());
    if (n > 2) {
      EXPECT_TRUE(std::is_sorted(distances.begin() + 2, distances.end()));
      EXPECT_LE(std::max(distances[0], distances[1]), distances[2]);
    }
  }
}

TEST(PointSearch, Method1MayExceedTheNumberAndMethod2NeverDoes) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  Searched const all(mesh, {1.5, 1.5, 1.5}, 1, 2), some(mesh, {1.5, 1.5, 1.5}, 2, 2);
  EXPECT_GT(all.object.m_ppIBConn[1][0], 2);
  EXPECT_EQ(2, some.object.m_ppIBConn[1][0]);
  EXPECT_EQ(all.object.MeanDistance, all.Support());
}

TEST(PointSearch, Method1WithANumberOfZeroTakesWhateverTheFirstCubeHolds) {
  EXPECT_EQ((List{4, 5}), Ascending(Searched(Row(9), {3.3, 0, 0}, 1, 0).Stencil(1)));
  EXPECT_EQ((List{4, 5}), Ascending(Searched(Row(9), {3.3, 0, 0}, 1, -5).Stencil(1)));
  Searched const none(Row(9), {30.3, 0, 0}, 1, 0);
  EXPECT_EQ(List(), none.Stencil(1));
  EXPECT_EQ(1.0, none.Support());
}

TEST(PointSearch, Method2WithANumberOfZeroOrLessGivesAnEmptyStencil) {
  for (int const number : {0, -1, -100})
    EXPECT_EQ(List(), Searched(Row(9), {3.3, 0, 0}, 2, number).Stencil(1));
}

TEST(PointSearch, MakesZeroedCoefficientRowsOfTheStencilsSize) {
  for (int const method : {1, 2, 3}) {
    TestMesh const mesh = Hexahedra(HexahedraOptions());
    Searched const s(mesh, {1.3, 1.1, 1.7}, method, 6);
    for (int k = 0; k <= s.object.m_ppIBConn[1][0]; ++k) {
      IBCnode const& w = s.object.m_ppIBCoef[1][k];
      EXPECT_TRUE(w.x == 0.0 && w.y == 0.0 && w.z == 0.0 && w.tag == 0);
      EXPECT_EQ(0.0, s.object.m_ppIBValueCoef[1][k]);
    }
  }
}

TEST(PointSearch, Methods1And2LeaveWhatMethod3Needs) {
  for (int const method : {1, 2}) {
    Searched const s(Hexahedra(HexahedraOptions()), {1.3, 1.1, 1.7}, method, 6);
    EXPECT_EQ(nullptr, s.object.m_ppIBNodeConn[1]);
    EXPECT_EQ(0, s.object.m_pIBNodeCellTable[1].m_iNRow);
    EXPECT_EQ(0, s.object.m_pIBTwoSeeds[1]);
  }
}

// ----------------------------------------------------------------------------------- what can be found at all

TEST(PointSearch, TakesUsableCellsAlone) {
  Array marks = AllUsable(9);
  marks[4] = marks[5] = kUnusable;
  EXPECT_EQ((List{3, 6, 2}), Searched(Row(9), marks, {3.3, 0, 0}, 2, 3).Stencil(1));
}

TEST(PointSearch, FindsGhostCellsAtTheirFacesAndHaloCellsAtTheirCentres) {
  TestMesh mesh = Row(2);
  int const wall = mesh.AddSide(kWall, 1, {-0.5, 0, 0}, {-50, 0, 0});
  int const halo = mesh.AddSide(kPartition, 2, {50, 0, 0}, {2.5, 0, 0});
  EXPECT_EQ((List{1, wall}), Searched(mesh, {-0.2, 0, 0}, 2, 2).Stencil(1));
  EXPECT_EQ((List{2, halo}), Ascending(Searched(mesh, {2.0, 0, 0}, 2, 2).Stencil(1)));
}

TEST(PointSearch, FindsUsableSymmetryCellsAtTheOrigin) {
  TestMesh mesh = LooseCells({{5, 5, 5}, {6, 5, 5}});
  int const symmetry = mesh.AddSide(kSymmetry, 1, {5, 4.5, 5}, {5, 4, 5});
  EXPECT_EQ((List{symmetry}), Searched(mesh, {0.25, 0, 0}, 2, 1).Stencil(1));
  EXPECT_EQ(0.25, Searched(mesh, {0.25, 0, 0}, 2, 1).Support());
}

// The boxes around the positions reach 1e-6 beyond them.
TEST(PointSearch, FindsCellsJustOutsideTheCube) {
  TestMesh const mesh = LooseCells({{1, 0, 0}, {2, 0, 0}});
  Searched const reached(mesh, {0.5e-6 + 3.0, 0, 0}, 1, 1), missed(mesh, {2e-6 + 3.0, 0, 0}, 1, 1);
  EXPECT_EQ((List{2}), reached.Stencil(1));
  EXPECT_EQ(1.0, reached.Support());
  EXPECT_EQ(2.0, missed.Support());
}

TEST(PointSearch, FarOutsideTheMeshIsServedAfterMoreSteps) {
  for (double const far : {100.0, 1e4, 1e7}) {
    Searched const nearest(Row(9), {8.0 + far, 0, 0}, 2, 3), all(Row(9), {7.75 + far, 0, 0}, 1, 3);
    EXPECT_EQ((List{7, 8, 9}), Ascending(nearest.Stencil(1))) << far;
    EXPECT_EQ(far + 2.0, nearest.Support()) << far;
    EXPECT_EQ((List{7, 8, 9}), Ascending(all.Stencil(1))) << far;
    EXPECT_EQ(far + 2.0, all.Support()) << "whole steps of the mean distance";
  }
}

// ---------------------------------------------------------------------------------- fewer cells than are wanted

TEST(PointSearch, WithFewerCellsThanWantedGoesOnWithAll) {
  for (int const method : {1, 2}) {
    Searched const s(Row(4), {1.2, 0, 0}, method, 20);
    EXPECT_EQ((List{1, 2, 3, 4}), Ascending(s.Stencil(1)));
    EXPECT_EQ(method == 1 ? 2.0 : 3.0 - 1.2, s.Support());
  }
}

TEST(PointSearch, WithoutUsableCellsGivesAnEmptyStencil) {
  for (int const method : {1, 2, 3}) {
    Searched const s(Row(4), Array(4, kUnusable), {1.2, 0, 0}, method, 20);
    EXPECT_EQ(List(), s.Stencil(1)) << "method " << method;
  }
}

TEST(PointSearch, WithoutUsableCellsFarAwayEndsToo) {
  for (double const far : {1e12, -1e300}) {
    Searched const s(Row(4), Array(4, kUnusable), {far, 0, 0}, 3, 20);
    EXPECT_EQ(List(), s.Stencil(1)) << far;
  }
}

TEST(PointSearch, OfMethod3WithASingleUsableCellTakesItAsTheOnlySeed) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  Array marks(mesh.NCell(), kUnusable);
  marks[14] = kUsable;
  Point const p{0.1, 0.2, 0.3}, q = mesh.Centre(14);
  Searched const s(mesh, marks, p, 3, 20);
  double const dx = p.x - q.x, dy = p.y - q.y, dz = p.z - q.z;
  EXPECT_EQ((List{14}), s.Stencil(1));
  EXPECT_EQ(0, s.object.m_pIBTwoSeeds[1]);
  EXPECT_EQ(std::sqrt(dy * dy + dx * dx + dz * dz), s.Support());
  EXPECT_EQ(8, s.object.m_ppIBNodeConn[1][0]);
}

TEST(PointSearch, WithoutAStepCoversEverythingAtOnce) {
  TestMesh const single = LooseCells({{1, 2, 3}});  // no inner face: the mean distance is not a number
  TestMesh zero = LooseCells({{1, 2, 3}, {1, 2, 3}, {4, 2, 1}});
  for (int const method : {1, 2}) {
    Searched const one(single, {5, 4, 3}, method, 20), three(zero, {1, 1, 1}, method, 2);
    EXPECT_EQ((List{1}), one.Stencil(1));
    EXPECT_EQ(method == 1 ? 4.0 : std::sqrt(20.0), one.Support()) << "method " << method;
    EXPECT_EQ(method == 1 ? 3U : 2U, three.Stencil(1).size());
    if (method == 1) {
      EXPECT_EQ(3.0, three.Support()) << "as far as the farthest bound";
    }
  }
  EXPECT_EQ((List{1}), Searched(single, {5, 4, 3}, 3, 20).Stencil(1));
  EXPECT_EQ(2U, Searched(zero, {1, 1, 1}, 3, 20).Stencil(1).size());
}

// One axis after the other, on either side.
TEST(PointSearch, WithoutAStepHasTheFarthestBoundForTheCubesHalfWidth) {
  double const far[] = {-7, -6, -5, 7, 6, 5};
  for (std::size_t k = 0; k < 6; ++k) {
    Point away;
    (k % 3 == 0 ? away.x : k % 3 == 1 ? away.y : away.z) = far[k];
    TestMesh const mesh = LooseCells({{0, 0, 0}, {0, 0, 0}, away});
    EXPECT_EQ(std::fabs(far[k]), Searched(mesh, {0, 0, 0}, 1, 20).Support()) << "axis " << k;
  }
}

// From some distance on the growth leaps; the half-width stays that of the first cube that reaches a cell.
TEST(PointSearch, FarOutsideTheMeshHasTheHalfWidthOfTheFirstCubeThatHoldsEnough) {
  for (int const k :
       {2, 998, 999, 1000, 1001, 1002, 1003, 1999, 2000, 2001, 2002, 3999, 4000, 4001, 123456}) {
    EXPECT_EQ(1.0 * k, Searched(Row(9), {8.0 + k - 0.5, 0, 0}, 1, 1).Support());
    EXPECT_EQ(1.0 * k, Searched(Row(9), {0.5 - k, 0, 0}, 1, 1).Support());
  }
}

// All distances are alike then, infinite or no numbers, so nothing is sorted: the cells keep the tree's order, and
// the difference of two distances is no number, which leaves a single seed.
TEST(PointSearch, OfPointsThatAreNoNumbersOrInfiniteTakesTheCellsInTheOrderOfTheTree) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  List const all = Searched(mesh, {1, 1, 1}, 1, mesh.NCell()).Stencil(1);
  ASSERT_EQ(static_cast<std::size_t>(mesh.NCell()), all.size());
  PointBed ring(mesh);
  Array marks = AllUsable(mesh.NCell());
  ring.SetUpToTree(marks, 1);
  int seeds[] = {all[0]};
  ring.object.CountingNodeToCellconnectionNumber(1, 1, seeds);
  List const expected[] = {all, List(all.begin(), all.begin() + 4), ring.Stencil(1)};
  double const inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  for (double const value : {inf, -inf, nan}) {
    for (Point const& p : {Point{value, 1, 1}, Point{1, value, 1}, Point{1, 1, value}}) {
      for (int const method : {1, 2, 3}) {
        Searched const s(mesh, p, method, 4);
        EXPECT_EQ(expected[method - 1], s.Stencil(1)) << value << " method " << method;
        EXPECT_EQ(0, s.object.m_pIBTwoSeeds[1]) << value << " method " << method;
      }
    }
  }
}

// ------------------------------------------------------------------------------------------------- method 3

/// Two interior cells with two nodes each, one of them common, and a third cell that only the host's rows bring
/// to a node; see the comments.
struct Ring : TestMesh {
  Ring() {
    for (int n = 0; n < 3; ++n) AddNode({1.0 * n, 1, 0});
    AddCell({0, 0, 0}, {2, 1});
    AddCell({1, 0, 0}, {3, 2});
    AddInteriorCell({10, 0, 0});
    AddInteriorCell({11, 0, 0});
    JoinInterior(1, 2);
    NodeCells(1) = {4, 1};
    NodeCells(2) = {2, 3, 1};
    NodeCells(3) = {4, 2, 3};
  }
};

TEST(PointRing, HoldsTheSeedsThenTheCellsOfTheirNodesInOrder) {
  Searched const s(Ring(), {0.4, 0, 0}, 3, 20);
  ASSERT_EQ(1, s.object.m_pIBTwoSeeds[1]);
  List const stencil = s.Stencil(1);
  ASSERT_EQ(4U, stencil.size());
  EXPECT_EQ((List{1, 2}), Ascending({stencil[0], stencil[1]}));
  int const* const nodes = s.object.m_ppIBNodeConn[1];
  ASSERT_EQ(3, nodes[0]);
  bool const firstSeedIs1 = stencil[0] == 1;  // two cells are not sorted, so the tree decides
  EXPECT_EQ((List{nodes[1], nodes[2], nodes[3]}), firstSeedIs1 ? (List{2, 1, 3}) : (List{3, 2, 1}));
  EXPECT_EQ((List{stencil[2], stencil[3]}), firstSeedIs1 ? (List{3, 4}) : (List{4, 3}));
}

TEST(PointRing, TableLeadsFromEachNodesCellsToTheirPlaceInTheStencil) {
  Searched const s(Ring(), {0.4, 0, 0}, 3, 20);
  Cpp_DataStructure& table = s.object.m_pIBNodeCellTable[1];
  int const* const nodes = s.object.m_ppIBNodeConn[1];
  ASSERT_EQ(nodes[0], table.m_iNRow);
  for (int j = 1; j <= nodes[0]; ++j) {
    int const* const cells = s.object.ppRBFiNodeConn[nodes[j]];
    ASSERT_EQ(cells[0], table.GetValue(j, 0));
    for (int k = 1; k <= cells[0]; ++k)
      EXPECT_EQ(cells[k], s.object.m_ppIBConn[1][table.GetValue(j, k)]) << "node " << nodes[j];
  }
}

TEST(PointRing, LeavesUnusableCellsOut) {
  Array marks = AllUsable(4);
  marks[3] = kUnusable;
  Searched const s(Ring(), marks, {0.4, 0, 0}, 3, 20);
  EXPECT_EQ((List{1, 2, 4}), Ascending(s.Stencil(1)));
}

TEST(PointRing, HoldsNodesWithoutUsableCellsToo) {
  Ring mesh;
  mesh.NodeCells(3) = {};
  mesh.NodeCells(1) = {};
  Searched const s(mesh, {0.4, 0, 0}, 3, 20);
  EXPECT_EQ((List{1, 2, 3}), Ascending(s.Stencil(1)));
  EXPECT_EQ(3, s.object.m_ppIBNodeConn[1][0]);
  for (int j = 1; j <= 3; ++j) {
    int const node = s.object.m_ppIBNodeConn[1][j];
    EXPECT_EQ(node == 2 ? 3 : 0, s.object.m_pIBNodeCellTable[1].GetValue(j, 0));
  }
}

TEST(PointRing, OfASingleStepCollectsFromAnySeeds) {
  PointBed bed{Ring()};
  Array marks = AllUsable(4);
  bed.SetUpToTree(marks, 2);
  int seeds[] = {2, 1, 77};
  EXPECT_EQ(4, bed.object.CountingNodeToCellconnectionNumber(1, 2, seeds));
  EXPECT_EQ((List{2, 1, 4, 3}), bed.Stencil(1));
  EXPECT_EQ(4, bed.object.CountingNodeToCellconnectionNumber(2, 1, seeds));
  EXPECT_EQ((List{2, 4, 3, 1}), bed.Stencil(2)) << "nothing is carried over from the point before";
  EXPECT_EQ(2, bed.object.m_ppIBNodeConn[2][0]);
}

TEST(PointRing, OfASingleStepReplacesWhatThePointHad) {
  PointBed bed{Ring()}, fresh{Ring()};
  Array marks = AllUsable(4);
  bed.SetUpToTree(marks, 1);
  fresh.SetUpToTree(marks, 1);
  int both[] = {2, 1}, single[] = {1};
  bed.object.CountingNodeToCellconnectionNumber(1, 2, both);
  bed.object.CountingNodeToCellconnectionNumber(1, 1, single);
  fresh.object.CountingNodeToCellconnectionNumber(1, 1, single);
  EXPECT_TRUE(SameContent(fresh.object, bed.object));
}

// Meshes need not have rows for ghost and halo cells.
TEST(PointRing, OfASeedWithoutARowOfNodesIsTheSeedAlone) {
  TestMesh mesh = Row(2);
  int const halo = mesh.AddSide(kPartition, 2, {1.5, 0, 0}, {2, 0, 0}, {mesh.AddNode({1.5, 0.5, 0})});
  PointBed bed(mesh);
  Array marks = AllUsable(3);
  bed.SetUpToTree(marks, 1);
  bed.host.mesh.CellLnods[halo] = nullptr;
  int seeds[] = {halo};
  EXPECT_EQ(1, bed.object.CountingNodeToCellconnectionNumber(1, 1, seeds));
  EXPECT_EQ((List{halo}), bed.Stencil(1));
  EXPECT_EQ(0, bed.object.m_ppIBNodeConn[1][0]);
}

TEST(PointRing, OfASeedBeyondTheBoundaryHoldsTheCellsOfItsFacesNodes) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh);
  Array marks = AllUsable(mesh.NCell());
  bed.SetUpToTree(marks, 1);
  int seeds[] = {mesh.wall[0].other};
  bed.object.CountingNodeToCellconnectionNumber(1, 1, seeds);
  List const stencil = bed.Stencil(1);
  EXPECT_EQ(4, bed.object.m_ppIBNodeConn[1][0]);
  EXPECT_NE(stencil.end(), std::find(stencil.begin(), stencil.end(), mesh.wall[0].cv));
}

TEST(PointRing, IgnoresTheWantedNumber) {
  Searched const few(Ring(), {0.4, 0, 0}, 3, 1), many(Ring(), {0.4, 0, 0}, 3, 1000);
  EXPECT_EQ(few.Stencil(1), many.Stencil(1));
  EXPECT_EQ(few.Support(), many.Support());
}

TEST(PointSeeds, HalfwayBetweenTwoCellsAreBoth) {
  Searched const s(Row(6), {2.5, 0, 0}, 3, 20);
  EXPECT_EQ(1, s.object.m_pIBTwoSeeds[1]);
  EXPECT_EQ((List{3, 4}), Ascending(s.Stencil(1)));
  EXPECT_EQ(0.5, s.Support());
}

// The cell itself stands first unless the tree gives it last; then it is left behind a farther one, which is the
// only seed.
TEST(PointSeeds, AtACellAreThatCellAndTheFirstOtherOfTheTree) {
  List const found = Searched(Row(6), {2.0, 0, 0}, 1, 2).Stencil(1);  // in the order of the tree
  ASSERT_EQ((List{2, 3, 4}), Ascending(found));
  bool const nearestLast = found[2] == 3;
  int const other = found[0] == 3 ? found[1] : found[0];
  Searched const s(Row(6), {2.0, 0, 0}, 3, 20);
  EXPECT_EQ(nearestLast ? 0 : 1, s.object.m_pIBTwoSeeds[1]);
  EXPECT_EQ(nearestLast ? (List{other}) : (List{3, other}), s.Stencil(1));
  EXPECT_EQ(1.0, s.Support());
}

// -------------------------------------------------------------------------------------------- all three methods

TEST(PointSearch, OfAllMethodsEqualsThePlainFormOnLattices) {
  int singleSeeds = 0;
  for (double const jitter : {0.0, 0.2}) {
    for (bool const listInterior : {true, false}) {
      HexahedraOptions options;
      options.jitter = jitter;
      options.nx = 4;
      options.listInteriorCellsAtBoundaryNodes = listInterior;
      TestMesh const mesh = Hexahedra(options);
      std::vector<Point> points;
      for (int i = 0; i < 60; ++i)
        points.push_back({0.07 * i, 1.5 + std::sin(i), 1.5 + 1.6 * std::cos(3.0 * i)});
      points.push_back(mesh.Centre(7));
      points.push_back({2, 1, 1});
      for (int const method : {1, 2, 3}) {
        PointSettings const settings{500.0, method, 9};
        PointBed bed(mesh, settings);
        Array marks = AllUsable(mesh.NCell());
        for (int c = 1; c <= mesh.NCell(); c += 5) marks[c] = kUnusable;
        PointArrays arrays(points);
        bed.SetUpToTree(marks, arrays.Size());
        bed.object.SearchIBADTress(arrays.x.Data(), arrays.y.Data(), arrays.z.Data(), method, 0.0, 9);
        PlainPointOperator plain(bed.host.mesh, bed.host.partitionFaces, settings);
        plain.Collate();
        plain.CollectNodeCells(marks.Data());
        plain.EnterCells(marks.Data());
        plain.SearchAll(points);
        EXPECT_TRUE(SameStencils(plain, bed.object)) << "method " << method << " jitter " << jitter;
        if (method == 3)
          for (int i = 1; i <= arrays.Size(); ++i) singleSeeds += 1 - bed.object.m_pIBTwoSeeds[i];
      }
    }
  }
  EXPECT_GT(singleSeeds, 5);
}

}  // namespace
}  // namespace zyn_test::search_test

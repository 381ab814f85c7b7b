#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/tree/RecordingTree.h"
#include "tests/support/watch/FlushedOutput.h"

// Which calls the point operator makes of the search tree, in which order and with which numbers, and what it makes
// of answers in an order that the test chooses.

namespace zyn_test {
namespace {

using List = std::vector<int>;

/// A test whose tree has forgotten all former calls and answers nothing.
struct Tree : ::testing::Test {
  Tree() { StartAnewWithoutAnswers(); }
};
using PointTree = Tree;
using PointCubes = Tree;
using PointSeeds = Tree;
using PointOrder = Tree;

Corners Cube(Point p, double d) { return {p.x - d, p.y - d, p.z - d, p.x + d, p.y + d, p.z + d}; }

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

/// Answers every query with the same identities.
void AlwaysAnswer(List const& ids) {
  Calls().answer = [ids](Corners const&) { return ids; };
}

// --------------------------------------------------------------------------------------------------- filling it

TEST_F(PointTree, GetsItsRangeOnceBeforeTheFirstBoxHighCornerFirst) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh);
  bed.SetUp(AllUsable(mesh.NCell()), {});
  CZynIBRBFInternalObject const& o = bed.object;
  ASSERT_EQ(1U, Calls().ranges.size());
  std::array<double, 9> const expected = {o.Xmax, o.Ymax, o.Zmax,  o.Xmin,  o.Ymin,
                                          o.Zmin, 1.0,    10000.0, 200000.0};
  EXPECT_EQ(expected, Calls().ranges[0].arguments);
  EXPECT_EQ(0, Calls().ranges.back().boxesBefore);
  EXPECT_GT(o.Xmax, o.Xmin);
}

TEST_F(PointTree, GetsTheUsableCellsInAscendingOrderHighCornerFirst) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh);
  Array marks = AllUsable(mesh.NCell());
  for (int c = 1; c <= mesh.NCell(); c += 3) marks[c] = kUnusable;
  bed.SetUp(marks, {});
  List usable;
  for (int c = 1; c <= mesh.NCell(); ++c)
    if (marks[c] < 0.0) usable.push_back(c);
  ASSERT_EQ(usable.size(), Calls().boxes.size());
  for (std::size_t k = 0; k < usable.size(); ++k) {
    IBCnode const& p = bed.object.m_pIBCnode[usable[k]];
    double const d = 1e-6;
    EXPECT_EQ(static_cast<int>(k) + 1, Calls().boxes[k].id);
    EXPECT_EQ((Corners{p.x + d, p.y + d, p.z + d, p.x - d, p.y - d, p.z - d}), Calls().boxes[k].corners);
  }
}

TEST_F(PointTree, GetsUsableSymmetryCellsAtTheOrigin) {
  TestMesh mesh = Row(2);
  mesh.AddSide(kSymmetry, 1, {5, 5, 5}, {6, 6, 6});
  PointBed bed(mesh);
  bed.SetUp(AllUsable(3), {});
  ASSERT_EQ(3U, Calls().boxes.size());
  EXPECT_EQ((Corners{1e-6, 1e-6, 1e-6, -1e-6, -1e-6, -1e-6}), Calls().boxes[2].corners);
}

TEST_F(PointTree, GetsNoCellThatHasAnIdentityAlready) {
  PointBed bed(Row(3));
  Array marks = AllUsable(3);
  bed.object.Initialize_IB_memory_allocate(1);
  bed.object.SetIBNodeCollation();
  bed.object.m_piCellToBlock[2] = 7;
  EXPECT_EQ(0, bed.object.SetIBADTress(marks.Data()));
  ASSERT_EQ(2U, Calls().boxes.size());
  EXPECT_EQ(7, bed.object.m_piCellToBlock[2]);
  EXPECT_EQ(2, bed.object.m_piCellToBlock[3]);
  EXPECT_EQ(3, bed.object.m_piBlockToCell[2]);
}

TEST_F(PointTree, IsMadeByTheSetUpAndDestroyedWithTheObject) {
  {
    PointBed bed(Row(3));
    EXPECT_EQ(0, Calls().constructed);
    bed.SetUp(AllUsable(3), {});
    EXPECT_EQ(1, Calls().constructed);
    EXPECT_EQ(0, Calls().destroyed);
  }
  EXPECT_EQ(1, Calls().destroyed);
}

TEST_F(PointTree, IsMadeAnewByAnotherSetUp) {
  {
    PointBed bed(Row(3));
    for (int k = 1; k <= 3; ++k) {
      bed.SetUp(AllUsable(3), {});
      EXPECT_EQ(k, Calls().constructed);
      EXPECT_EQ(k - 1, Calls().destroyed);
    }
  }
  EXPECT_EQ(3, Calls().destroyed);
  EXPECT_EQ(9U, Calls().boxes.size());
}

TEST_F(PointTree, IsNotSearchedWithoutPointsNorByAnUnknownMethod) {
  PointBed none(Row(3)), unknown(Row(3), PointSettings{500.0, 4, 20});
  none.SetUp(AllUsable(3), {});
  unknown.SetUp(AllUsable(3), {{1, 0, 0}});
  EXPECT_TRUE(Calls().queries.empty());
}

TEST_F(PointTree, IsNotSearchedByTheApplication) {
  AlwaysAnswer({1, 2, 3});
  PointBed bed(Row(3), PointSettings{500.0, 2, 3});
  bed.SetUp(AllUsable(3), {{1.2, 0, 0}});
  std::size_t const before = Calls().queries.size();
  Array field(3, 1.0), value(1), x(1), y(1), z(1);
  bed.object.Multiply_IBRBFCoefficent(field.Data(), value.Data(), x.Data(), y.Data(), z.Data());
  EXPECT_EQ(before, Calls().queries.size());
}

TEST_F(PointTree, IsSearchedAfterItsLineWasPrinted) {
  PointBed bed(Row(3));
  Array marks = AllUsable(3);
  PointArrays points({{1.2, 0, 0}});
  std::string atSearch;
  {
    FlushedOutput const output;
    Calls().answer = [&](Corners const&) {
      atSearch = output.Arrived();
      return List{1, 2};
    };
    bed.object.Initialize_IBInterpolateData(marks.Data(), 1, points.x.Data(), points.y.Data(),
                                            points.z.Data());
  }
  EXPECT_EQ(
      "IB Memory Allocation ok\nSetNodeCollation ok\nDefault DQ parameter is adopted.\nSetIBADTress ok\n",
      atSearch);
}

// ---------------------------------------------------------------------------------------------------- the cubes

// The test's tree answers a cube of half-width d with d identities.
TEST_F(PointCubes, GrowByTheMeanDistanceUntilTheyHoldEnough) {
  Point const p{4.25, 0.5, -0.25};
  for (int const method : {1, 2}) {
    StartAnewWithoutAnswers();
    Calls().answer = [](Corners const& c) {
      int const n = static_cast<int>(std::lround(0.5 * (c[3] - c[0])));
      List const all = {6, 5, 7, 4, 8, 3};
      return List(all.begin(), all.begin() + n);
    };
    Searched const s(Row(9), p, method, 3);
    ASSERT_EQ(3U, Calls().queries.size());
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_EQ(Cube(p, 1.0 * static_cast<double>(k + 1)), Calls().queries[k].corners) << "low corner first";
      EXPECT_EQ(0, Calls().queries[k].last);
    }
    EXPECT_EQ(3U, s.Stencil(1).size());
  }
}

TEST_F(PointCubes, GrowForMethod3UntilTheyHoldTwoWhateverTheNumber) {
  Point const p{4.25, 0.5, -0.25};
  for (int const number : {0, 1, 20}) {
    StartAnewWithoutAnswers();
    Calls().answer = [](Corners const& c) { return c[3] - c[0] > 5.0 ? List{5, 6} : List{5}; };
    Searched const s(Row(9), p, 3, number);
    ASSERT_EQ(3U, Calls().queries.size());
    EXPECT_EQ(Cube(p, 3.0), Calls().queries.back().corners);
  }
}

TEST_F(PointCubes, UseWholeStepsOfTheMeanDistance) {
  TestMesh mesh = LooseCells({{0, 0, 0}, {0.1, 0, 0}, {50, 50, 50}, {-50, -50, -50}});
  Calls().answer = [](Corners const& c) { return c[3] - c[0] >= 2.0 ? List{1, 2, 3} : List(); };
  Searched const s(mesh, {0.3, 0.2, 0.1}, 1, 3);
  ASSERT_FALSE(Calls().queries.empty());
  for (std::size_t k = 0; k < Calls().queries.size(); ++k)
    EXPECT_EQ(Cube({0.3, 0.2, 0.1}, static_cast<double>(k + 1) * s.object.MeanDistance),
              Calls().queries[k].corners);
  EXPECT_EQ(10.0 * s.object.MeanDistance, s.Support());
}

// Nothing is ever found: the answer is that of the first cube that holds all positions.
TEST_F(PointCubes, StopGrowingOnceTheyCoverEveryEntry) {
  Point const p{4.25, 0.5, -0.25};
  for (int const method : {1, 2, 3}) {
    StartAnewWithoutAnswers();
    Searched const s(Row(9), p, method, 3);
    ASSERT_LE(5U, Calls().queries.size());
    for (std::size_t k = 0; k < 5; ++k)
      EXPECT_EQ(Cube(p, static_cast<double>(k + 1)), Calls().queries[k].corners);
    EXPECT_EQ(Cube(p, 5.0), Calls().queries.back().corners) << "from 4.25 to 0";
    EXPECT_EQ(List(), s.Stencil(1));
  }
}

TEST_F(PointCubes, StopGrowingWithFewerThanWantedAndGoOnWithThese) {
  AlwaysAnswer({4, 5});
  Searched const s(Row(9), {4.25, 0, 0}, 1, 20);
  EXPECT_EQ((List{4, 5}), s.Stencil(1));
  EXPECT_EQ(5.0, s.Support());
}

TEST_F(PointCubes, CoverTheUsableCellsAlone) {
  Array marks(9, kUnusable);
  marks[5] = kUsable;
  Searched const s(Row(9), marks, {4.25, 0, 0}, 2, 20);
  ASSERT_FALSE(Calls().queries.empty());
  EXPECT_EQ(Cube({4.25, 0, 0}, 1.0), Calls().queries.back().corners);
}

TEST_F(PointCubes, CoverUsableSymmetryCellsAtTheOriginToo) {
  TestMesh mesh = LooseCells({{5, 0, 0}, {6, 0, 0}});
  mesh.AddSide(kSymmetry, 1, {5, 1, 0}, {5, 2, 0});
  Searched const s(mesh, {5.5, 0, 0}, 1, 20);
  EXPECT_EQ(Cube({5.5, 0, 0}, 6.0), Calls().queries.back().corners);
}

TEST_F(PointCubes, WithoutAStepEndWithOneThatCoversEverything) {
  TestMesh const noInnerFace = LooseCells({{1, 2, 3}}),
                 onePlace = LooseCells({{1, 2, 3}, {1, 2, 3}, {-5, 2, 3}});
  for (TestMesh const& mesh : {noInnerFace, onePlace}) {
    for (int const method : {1, 2, 3}) {
      StartAnewWithoutAnswers();
      AlwaysAnswer({1});
      Searched const s(mesh, {2, 2.5, 4}, method, 20);
      ASSERT_FALSE(Calls().queries.empty());
      Corners const& c = Calls().queries.back().corners;
      for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_LT(c[axis], -1e10);
        EXPECT_GT(c[axis + 3], 1e10);
      }
      EXPECT_EQ((List{1}), s.Stencil(1));
      if (method == 1) {
        EXPECT_EQ(mesh.NCell() == 1 ? 1.0 : 7.0, s.Support()) << "as far as the farthest";
      }
    }
  }
}

// A point a million steps away needs no million searches, and gets the same cube.
TEST_F(PointCubes, ReachFarPointsInFewSearches) {
  Point const p{8e6 + 0.5, 0, 0};
  Calls().answer = [](Corners const& c) {
    List ids;
    for (int b = 1; b <= 9; ++b)
      if (b - 1.0 + 1e-6 >= c[0]) ids.push_back(b);
    return ids;
  };
  Searched const s(Row(9), p, 1, 3);
  EXPECT_EQ((List{7, 8, 9}), s.Stencil(1));
  EXPECT_EQ(8e6 + 1.0 - 6.0, s.Support());
  EXPECT_LT(Calls().queries.size(), 2000U);
}

// ------------------------------------------------------------------------------------------- order of the members

TEST_F(PointOrder, OfMethod1IsThatOfTheTree) {
  AlwaysAnswer({5, 2, 9, 1});
  EXPECT_EQ((List{5, 2, 9, 1}), Searched(Row(9), {3, 0, 0}, 1, 4).Stencil(1));
}

TEST_F(PointOrder, OfMethod2IsThatOfTheSortWithOnePassFewer) {
  AlwaysAnswer({3, 4, 2});  // distances 2, 3, 1 from cell 1
  Searched const s(Row(9), {0, 0, 0}, 2, 3);
  EXPECT_EQ((List{3, 2, 4}), s.Stencil(1)) << "2, 1, 3";
  EXPECT_EQ(3.0, s.Support());
}

TEST_F(PointOrder, OfMethod2KeepsTheFirstOfTheSortedEvenIfTheNearestIsLost) {
  AlwaysAnswer({3, 4, 2});
  Searched const s(Row(9), {0, 0, 0}, 2, 1);
  EXPECT_EQ((List{3}), s.Stencil(1)) << "the second nearest stands first";
  EXPECT_EQ(2.0, s.Support());
}

TEST_F(PointOrder, OfTwoAnswersIsNotSorted) {
  AlwaysAnswer({4, 2});
  Searched const s(Row(9), {0, 0, 0}, 2, 2);
  EXPECT_EQ((List{4, 2}), s.Stencil(1));
  EXPECT_EQ(1.0, s.Support()) << "the distance of the last one, which is the nearer here";
}

TEST_F(PointOrder, OfEqualDistancesIsThatOfTheTree) {
  AlwaysAnswer({6, 4, 5, 7, 3});  // distances 1, 1, 0, 2, 2 from cell 5
  EXPECT_EQ((List{5, 6, 4, 7, 3}), Searched(Row(9), {4, 0, 0}, 2, 5).Stencil(1));
}

TEST_F(PointOrder, GoesThroughTheIdentitiesToTheCells) {
  AlwaysAnswer({2, 1, 3});
  Array marks = AllUsable(9);
  for (int const c : {1, 3, 5}) marks[c] = kUnusable;  // identities 1, 2, 3 are cells 2, 4, 6
  EXPECT_EQ((List{4, 2, 6}), Searched(Row(9), marks, {3, 0, 0}, 1, 3).Stencil(1));
}

/// Many cells along x, a few of them at one distance from the origin, given by the tree in a random order.
struct ManyCells {
  explicit ManyCells(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::size_t const n = 3 + random() % 300;
    std::vector<Point> centres;
    for (std::size_t k = 0; k < n; ++k) {
      double const distance = 0.25 * static_cast<double>(random() % n);
      centres.push_back({random() % 2 == 0 ? distance : -distance, 0, 0});
      ids.push_back(static_cast<int>(k) + 1);
    }
    centres[1] = {centres[0].x + 1.0, 0, 0};  // the step
    std::shuffle(ids.begin(), ids.end(), random);
    mesh = LooseCells(centres);
    sorted = ids;
    for (int const id : ids) distances.push_back(std::fabs(mesh.Centre(id).x));
    PlainPointOperator::SortAllButTheFirstTwo(sorted, distances);
    AlwaysAnswer(ids);
  }

  TestMesh mesh;
  List ids;                       ///< as the tree gives them
  List sorted;                    ///< as the plain loop leaves them
  std::vector<double> distances;  ///< of the sorted
};

// Only the members that are kept need to be brought to their places; they must be those of the whole sort.
TEST_F(PointOrder, OfMethod2IsThatOfThePlainLoopHoweverManyAreKept) {
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    ManyCells const many(seed);
    for (std::size_t const number : {1U, 2U, 3U, 7U, 20U, 60U, 150U, 1000U}) {
      std::size_t const n = std::min(number, many.sorted.size());
      Searched const s(many.mesh, {0, 0, 0}, 2, static_cast<int>(number));
      auto const end = many.sorted.begin() + static_cast<std::ptrdiff_t>(n);
      ASSERT_EQ(List(many.sorted.begin(), end), s.Stencil(1)) << "seed " << seed << " number " << number;
      ASSERT_EQ(many.distances[n - 1], s.Support());
    }
  }
}

TEST_F(PointSeeds, OfManyInAnyOrderAreThoseOfThePlainLoop) {
  int single = 0;
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    ManyCells const many(seed);
    bool const two = 1e-6 > many.distances[0] - many.distances[1];
    Searched const s(many.mesh, {0, 0, 0}, 3, 20);
    ASSERT_EQ(two ? 1 : 0, s.object.m_pIBTwoSeeds[1]);
    ASSERT_EQ(List(many.sorted.begin(), many.sorted.begin() + (two ? 2 : 1)), s.Stencil(1)) << seed;
    ASSERT_EQ(std::max(many.distances[0], many.distances[1]), s.Support());
    if (!two) ++single;
  }
  EXPECT_GT(single, 0);
}

// The tree's answer lives until its next search, which is that of the next point.
TEST_F(PointOrder, SurvivesTheSearchesOfLaterPoints) {
  PointBed bed(Row(9), PointSettings{500.0, 1, 3});
  std::vector<List> const answers = {{5, 2, 9}, {1, 2, 3}, {4, 8, 6}};
  std::size_t next = 0;
  Calls().answer = [&](Corners const&) { return answers[next++]; };
  bed.SetUp(AllUsable(9), {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
  for (int const i : {1, 2, 3}) EXPECT_EQ(answers[static_cast<std::size_t>(i - 1)], bed.Stencil(i));
}

// --------------------------------------------------------------------------------------------------------- seeds

/// The seeds that method 3 takes at the origin when the tree gives cells at the distances `given`, in that order.
struct Seeds {
  explicit Seeds(std::vector<double> const& given) {
    std::vector<Point> centres;
    List ids;
    for (double const distance : given) {
      centres.push_back({distance, 0, 0});
      ids.push_back(static_cast<int>(centres.size()));
    }
    centres.push_back({50, 50, 50});
    AlwaysAnswer(ids);
    Searched const s(LooseCells(centres), {0, 0, 0}, 3, 20);
    two = s.object.m_pIBTwoSeeds[1] == 1;
    support = s.Support();
    for (int const c : s.Stencil(1)) distances.push_back(centres[static_cast<std::size_t>(c - 1)].x);
  }

  bool two;
  double support;
  std::vector<double> distances;  ///< of the seeds, in their order
};

using Distances = std::vector<double>;

TEST_F(PointSeeds, OfThreeInOrderAreTheTwoNearest) {
  Seeds const seeds({1, 2, 3});
  EXPECT_TRUE(seeds.two);
  EXPECT_EQ((Distances{1, 2}), seeds.distances);
  EXPECT_EQ(2.0, seeds.support);
}

TEST_F(PointSeeds, OfThreeWithTheNearestLastIsTheFartherOfTheTwoNearest) {
  Seeds const seeds({2, 3, 1});
  EXPECT_FALSE(seeds.two);
  EXPECT_EQ((Distances{2}), seeds.distances);
  EXPECT_EQ(2.0, seeds.support);
}

TEST_F(PointSeeds, OfTwoInOrderAreBoth) {
  Seeds const seeds({1, 2});
  EXPECT_TRUE(seeds.two);
  EXPECT_EQ((Distances{1, 2}), seeds.distances);
  EXPECT_EQ(2.0, seeds.support);
}

// Two are not sorted, so the tree's order decides.
TEST_F(PointSeeds, OfTwoWithTheFartherFirstIsTheFartherAlone) {
  Seeds const seeds({2, 1});
  EXPECT_FALSE(seeds.two);
  EXPECT_EQ((Distances{2}), seeds.distances);
  EXPECT_EQ(2.0, seeds.support);
}

TEST_F(PointSeeds, AtOneDistanceAreBothInTheOrderOfTheTree) {
  TestMesh mesh = LooseCells({{1, 0, 0}, {-1, 0, 0}, {0, 50, 0}});
  for (List const& ids : {List{1, 2}, List{2, 1}}) {
    AlwaysAnswer(ids);
    Searched const s(mesh, {0, 0, 0}, 3, 20);
    EXPECT_EQ(1, s.object.m_pIBTwoSeeds[1]);
    EXPECT_EQ(ids, s.Stencil(1));
    EXPECT_EQ(1.0, s.Support());
  }
}

TEST_F(PointSeeds, AreTwoAsLongAsTheFirstIsFartherByLessThanAMillionth) {
  EXPECT_TRUE(Seeds({1.0 + 0.9e-6, 1.0}).two);
  EXPECT_FALSE(Seeds({1.0 + 1.1e-6, 1.0}).two);
  EXPECT_FALSE(Seeds({1e-6, 0.0}).two) << "strictly less";
  EXPECT_TRUE(Seeds({1.0, 1.0 + 1.1e-6}).two) << "the difference has its sign";
  EXPECT_TRUE(Seeds({1.0, 1e6}).two);
}

TEST_F(PointSeeds, SupportLengthIsTheGreaterOfTheTwoDistancesInBothCases) {
  EXPECT_EQ(1.0 + 0.5e-6, Seeds({1.0 + 0.5e-6, 1.0}).support);
  EXPECT_EQ(3.0, Seeds({3.0, 1.0}).support);
  EXPECT_EQ(3.0, Seeds({1.0, 3.0}).support);
}

TEST_F(PointSeeds, OfManyFollowTheSort) {
  EXPECT_EQ((Distances{1, 2}), Seeds({5, 1, 4, 2, 3}).distances);
  EXPECT_EQ((Distances{1, 2}), Seeds({5, 4, 3, 1, 2}).distances);
  EXPECT_EQ((Distances{2}), Seeds({5, 4, 3, 2, 1}).distances);
}

TEST_F(PointSeeds, BringTheCellsOfTheirNodesInTheOrderOfTheSeeds) {
  TestMesh mesh;
  for (int n = 0; n < 3; ++n) mesh.AddNode({1.0 * n, 1, 0});
  mesh.AddCell({0, 0, 0}, {2, 1});
  mesh.AddCell({1, 0, 0}, {3, 2});
  mesh.AddInteriorCell({10, 0, 0});
  mesh.AddInteriorCell({11, 0, 0});
  mesh.JoinInterior(1, 2);
  mesh.NodeCells(1) = {4, 1};
  mesh.NodeCells(2) = {2, 3, 1};
  mesh.NodeCells(3) = {4, 2, 3};
  auto const nodesOf = [](Searched const& s) {
    int const* const row = s.object.m_ppIBNodeConn[1];
    return List(row + 1, row + 1 + row[0]);
  };
  AlwaysAnswer({1, 2});
  Searched const nearFirst(mesh, {0.4, 0, 0}, 3, 20);
  EXPECT_EQ((List{1, 2, 3, 4}), nearFirst.Stencil(1));
  EXPECT_EQ((List{2, 1, 3}), nodesOf(nearFirst));
  AlwaysAnswer({2, 1});
  Searched const halfway(mesh, {0.5, 0, 0}, 3, 20);
  EXPECT_EQ((List{2, 1, 4, 3}), halfway.Stencil(1));
  EXPECT_EQ((List{3, 2, 1}), nodesOf(halfway));
  Searched const farFirst(mesh, {0.4, 0, 0}, 3, 20);
  EXPECT_EQ((List{2, 4, 3, 1}), farFirst.Stencil(1)) << "the farther is the only seed";
  EXPECT_EQ((List{3, 2}), nodesOf(farFirst));
}

}  // namespace
}  // namespace zyn_test

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/tree/RecordingTree.h"
#include "tests/support/watch/SettingsFolder.h"

// Which calls the face operator makes of its two search trees, in which order and with which numbers.

namespace zyn_test {
namespace {

/// Number of the tree of cells and of the tree of boundary faces.
constexpr int kCells = 1, kBoundary = 2;

TreeCalls CallsOfSetUp(TestMesh const& plan, int faceType, FaceSettings const& settings) {
  StartAnew();
  FaceBed bed(plan);
  bed.SetUp(faceType, settings);
  return Calls();
}

Corners Around(Point p, double d) { return {p.x - d, p.y - d, p.z - d, p.x + d, p.y + d, p.z + d}; }

// --------------------------------------------------------------------------------------------------- both trees

TEST(FaceTrees, AreTwoAndAreDestroyedBySetUp) {
  for (int const method : {1, 2, 3, 4, 7}) {
    TreeCalls const calls = CallsOfSetUp(SkewedCubesOfAllGroups(), kInner, {method, 50.0, 8});
    EXPECT_EQ(2, calls.constructed) << method;
    EXPECT_EQ(2, calls.destroyed) << method;
  }
}

TEST(FaceTrees, AreNoneForAGroupWithoutFaces) {
  std::vector<double> const lines = {0.0, 1.0, 2.0};
  TreeCalls const calls =
      CallsOfSetUp(Box(lines, lines, lines, {kWall, kWall, kWall, kWall, kWall, kWall}), kInlet, {});
  EXPECT_EQ(0, calls.constructed);
}

// ------------------------------------------------------------------------------------------------ tree of cells

TEST(CellTree, GetsTheBoundsOfTheMeshOnceMaximaFirstBeforeItsFirstBox) {
  for (int const method : {1, 4, 7}) {
    TreeCalls const calls = CallsOfSetUp(TwoCubes(), kInner, {method, 50.0, 8});
    std::vector<TreeCalls::Range> const ranges = calls.RangesOf(kCells);
    ASSERT_EQ(1U, ranges.size());
    std::array<double, 9> const expected = {1.0, 0.5, 0.5, -1.0, -0.5, -0.5, 1.0, 10000.0, 200000.0};
    EXPECT_EQ(expected, ranges[0].arguments);
    EXPECT_EQ(0, ranges[0].boxesBefore);
  }
}

TEST(CellTree, GetsEveryCellInAscendingOrderAsABoxMaximaFirst) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  StartAnew();
  FaceBed bed(plan);
  Stages stages(bed.object, kInner, {});
  stages.FillTree();
  std::vector<TreeCalls::Box> const boxes = Calls().BoxesOf(kCells);
  ASSERT_EQ(plan.NCell(), static_cast<int>(boxes.size()));
  for (int c = 1; c <= plan.NCell(); ++c) {
    TreeCalls::Box const& box = boxes[static_cast<std::size_t>(c - 1)];
    IBCnode const& p = bed.object.m_pNodeTable[c];
    Corners const expected = {p.x + 1e-6, p.y + 1e-6, p.z + 1e-6, p.x - 1e-6, p.y - 1e-6, p.z - 1e-6};
    EXPECT_EQ(c, box.id);
    EXPECT_EQ(expected, box.corners) << c;
  }
}

// An absolute margin: on a mesh as small as that, neighbours' boxes overlap.
TEST(CellTree, HasTheSameMarginOnAMeshOfAnySize) {
  for (double const size : {1e-7, 1e7}) {
    TestMesh const plan = TwoCubes().Mapped([size](Point p) {
      return Point{size * p.x, size * p.y, size * p.z};
    });
    TreeCalls const calls = CallsOfSetUp(plan, kInner, {});
    EXPECT_EQ(size * -0.5 + 1e-6, calls.BoxesOf(kCells)[0].corners[0]);
    EXPECT_EQ(size * -0.5 - 1e-6, calls.BoxesOf(kCells)[0].corners[3]);
  }
}

// ------------------------------------------------------------------------------------- tree of boundary faces

TEST(BoundaryTree, IsBuiltForMethod4Alone) {
  for (int const method : {1, 2, 3, 7}) {
    TreeCalls const calls = CallsOfSetUp(SkewedCubesOfAllGroups(), kInner, {method, 50.0, 8});
    EXPECT_TRUE(calls.RangesOf(kBoundary).empty()) << method;
    EXPECT_TRUE(calls.BoxesOf(kBoundary).empty()) << method;
  }
}

TEST(BoundaryTree, GetsTheSameBoundsAsTheTreeOfCells) {
  TreeCalls const calls = CallsOfSetUp(SkewedCubesOfAllGroups(), kInner, {});
  ASSERT_EQ(1U, calls.RangesOf(kBoundary).size());
  EXPECT_EQ(calls.RangesOf(kCells)[0].arguments, calls.RangesOf(kBoundary)[0].arguments);
  EXPECT_EQ(0, calls.RangesOf(kBoundary)[0].boxesBefore);
}

/// The box of a face's vertices, maxima first.
Corners BoxOf(TestMesh const& plan, Face const& face) {
  Corners box = {-1e10, -1e10, -1e10, 1e10, 1e10, 1e10};
  for (int const v : face.nodes) {
    Point const p = plan.nodes[static_cast<std::size_t>(v)];
    double const coordinates[] = {p.x, p.y, p.z};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      box[axis] = std::max(box[axis], coordinates[axis]);
      box[axis + 3] = std::min(box[axis + 3], coordinates[axis]);
    }
  }
  return box;
}

TEST(BoundaryTree, GetsWallsInletsOutletsAndSymmetryWithoutMarginsNumberedThroughout) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  std::vector<TreeCalls::Box> const boxes = CallsOfSetUp(plan, kInner, {}).BoxesOf(kBoundary);
  std::vector<Corners> expected;
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry})
    for (Face const& face : plan.Of(group)) expected.push_back(BoxOf(plan, face));
  ASSERT_EQ(expected.size(), boxes.size());
  for (std::size_t k = 0; k < boxes.size(); ++k) {
    EXPECT_EQ(static_cast<int>(k) + 1, boxes[k].id);
    EXPECT_EQ(expected[k], boxes[k].corners) << k;
  }
}

TEST(BoundaryTree, IsCompleteBeforeTheFirstSearchAndIsNotSearched) {
  StartAnew();
  FaceBed bed(SkewedCubesOfAllGroups());
  Stages stages(bed.object, kInner, {});
  std::vector<std::size_t> boxesAtSearches;
  stages.FillTree();
  Calls().arrange = [&](std::vector<int>&) { boxesAtSearches.push_back(Calls().BoxesOf(kBoundary).size()); };
  stages.Derive();
  ASSERT_FALSE(boxesAtSearches.empty());
  EXPECT_EQ(45U, boxesAtSearches.front());
  for (TreeCalls::Query const& query : Calls().queries) EXPECT_EQ(kCells, query.tree);
}

TEST(BoundaryTree, CanBeBuiltForAnyMethod) {
  StartAnew();
  FaceBed bed(TwoCubes());
  Stages stages(bed.object, kInner, {2, 50.0, 8});
  stages.FillTree();
  EXPECT_EQ(0, bed.object.SetBoundaryCellADTress());
  EXPECT_EQ(8U, Calls().BoxesOf(kBoundary).size()) << "4 walls, 1 inlet, 1 outlet, 2 symmetry";
}

// ---------------------------------------------------------------------------------------------------- searches

// Half-widths are products: six times 0.1 is not what adding 0.1 six times gives.
TEST(FaceSearch, AsksMinimaFirstWithCubesOfOneTwoThreeMeanDistances) {
  StartAnew();
  FaceBed bed(TwoCubes());
  Stages stages(bed.object, kInner, {1, 50.0, 2000});  // never enough
  stages.FillTree();
  bed.object.MeanDistance = 0.1;
  stages.FindStencils();
  ASSERT_EQ(10U, Calls().queries.size()) << "the farthest points are 1 unit away";
  double sum = 0.0;
  bool differs = false;
  for (int k = 1; k <= 10; ++k) {
    TreeCalls::Query const& query = Calls().queries[static_cast<std::size_t>(k - 1)];
    EXPECT_EQ(Around({0.0, 0.0, 0.0}, k * 0.1), query.corners) << k;
    EXPECT_EQ(0, query.last);
    sum += 0.1;
    differs = differs || sum != k * 0.1;
  }
  EXPECT_TRUE(differs);
}

TEST(FaceSearch, StopsAtTheFirstCubeThatHoldsEnough) {
  for (int const method : {1, 2}) {
    for (int const number : {0, 5, 20, 40}) {
      FaceSettings const settings = {method, 50.0, number};
      TreeCalls const calls = CallsOfSetUp(SkewedCubesOfAllGroups(), kInner, settings);
      int faces = 0, tooSmall = 0;
      for (TreeCalls::Query const& query : calls.queries) {
        if (query.found >= number)
          ++faces;
        else
          ++tooSmall;
      }
      EXPECT_EQ(54, faces) << "one last search for each face";
      if (number == 0) {
        EXPECT_EQ(0, tooSmall);
      } else if (number == 40) {
        EXPECT_GT(tooSmall, 0);
      }
    }
  }
}

TEST(FaceSearch, StopsWhenItsCubeCoversAllPoints) {
  StartAnew();
  FaceBed bed(CubesOfAllGroups());
  Stages stages(bed.object, kInner, {2, 50.0, 1000000});
  stages.FindStencils();
  int largest = 0, faces = 0;
  for (TreeCalls::Query const& query : Calls().queries) {
    bool const startsAnew = query.corners[3] - query.corners[0] == 2.0;
    if (startsAnew) ++faces;
    largest = std::max(largest, query.found);
  }
  EXPECT_EQ(54, faces);
  EXPECT_EQ(81, largest);
  EXPECT_LE(Calls().queries.size(), 54U * 4U) << "the farthest of all points is less than 4 units away";
}

// The first cube is the face's centre itself; it does not grow, and the next one covers everything.
TEST(FaceSearch, OfAMeshWithoutAMeanDistanceEndsWithOneThatCoversEverything) {
  TestMesh onePoint = TwoCubes();
  onePoint.centres[2] = onePoint.centres[1];                         // a mean distance of 0
  TestMesh const oneCell = Box({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0});  // and one that is not a number
  for (TestMesh const& plan : {onePoint, oneCell}) {
    TreeCalls const calls = CallsOfSetUp(plan, kWall, {2, 50.0, 5});
    ASSERT_EQ(2 * plan.Of(kWall).size(), calls.queries.size());
    for (std::size_t k = 1; k < calls.queries.size(); k += 2) {
      TreeCalls::Query const& query = calls.queries[k];
      EXPECT_EQ(plan.NCell(), query.found);
      EXPECT_LE(query.corners[0], -1.0);
      EXPECT_GE(query.corners[3], 1.0);
    }
  }
}

TEST(FaceSearch, OfMethod3IsNotMade) {
  EXPECT_TRUE(CallsOfSetUp(SkewedCubesOfAllGroups(), kInner, {3, 50.0, 8}).queries.empty());
}

TEST(FaceSearch, OfMethod4IsMadeAroundEThenP) {
  StartAnew();
  FaceBed bed(TwoCubes());
  Stages stages(bed.object, kInner, {});
  stages.FindStencils();
  std::vector<TreeCalls::Query> const& queries = Calls().queries;
  ASSERT_EQ(2U, queries.size());
  EXPECT_EQ(Around({0.5, 0.0, 0.0}, 1.0), queries[0].corners);
  EXPECT_EQ(Around({-0.5, 0.0, 0.0}, 1.0), queries[1].corners);
}

TEST(FaceSearch, OfMethod4OnBoundaryFacesIsMadeAroundPAlone) {
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    TestMesh const plan = CubesOfAllGroups();
    TreeCalls const calls = CallsOfSetUp(plan, group, {});
    EXPECT_EQ(plan.Of(group).size(), calls.queries.size());
  }
  EXPECT_EQ(18U, CallsOfSetUp(CubesOfAllGroups(), kPartition, {}).queries.size()) << "P and E of 9 faces";
}

// Around (5, 0, 0) the outlet's side cell at x = 1 is 4 mean distances away.
TEST(FaceSearch, ForTheNearestCellGrowsUntilItHoldsAny) {
  StartAnew();
  FaceBed bed(TwoCubes());
  Stages stages(bed.object, kInner, {});
  stages.FillTree();
  EXPECT_EQ(4, bed.object.Search_ClosestCellID_byNode(5.0, 0.0, 0.0));
  ASSERT_EQ(4U, Calls().queries.size());
  for (int k = 1; k <= 4; ++k) {
    TreeCalls::Query const& query = Calls().queries[static_cast<std::size_t>(k - 1)];
    EXPECT_EQ(Around({5.0, 0.0, 0.0}, 1.0 * k), query.corners);
    EXPECT_EQ(k == 4, query.found > 0);
  }
}

// P = (-1/2, 0, 0), E = (1/2, 0, 0), A2 = (2, 0, 0) is 3/2 from cell 2, and B2 as far from cell 1.
TEST(FaceSearch, ByCubesIsOneOfFixedSizeAroundEachVirtualPoint) {
  StartAnew();
  FaceBed bed(TwoCubes());
  Stages stages(bed.object, kInner, {});
  stages.FillTree();
  bed.object.m_ppVirtualNode[1][1].SetData(-0.5, 0.0, 0.0, 1);
  bed.object.m_ppVirtualNode[1][2].SetData(0.5, 0.0, 0.0, 2);
  int pair[] = {1, 2};
  Printed([&] { bed.object.CountingVirtualNodeToCellBySearchNumber(1, pair, 8.0, 0.0, 0.0); });
  ASSERT_EQ(2U, Calls().queries.size());
  EXPECT_EQ(Around({-0.5, 0.0, 0.0}, 1.5), Calls().queries[0].corners);
  EXPECT_EQ(Around({0.5, 0.0, 0.0}, 1.5), Calls().queries[1].corners);
  EXPECT_EQ(0, Calls().queries[0].last);
}

// |F + 2 mean u - B| differs on the two sides when the cells are not at equal distance.
TEST(FaceSearch, ByCubesMeasuresTheRadiusOfEachSideFromTheOtherCell) {
  TestMesh plan = TwoCubes();
  plan.centres[1].x = -0.25;
  plan.centres[2].x = 1.75;  // a mean distance of 2: A2 = (4, 0, 0), B2 = (-4, 0, 0)
  StartAnew();
  FaceBed bed(plan);
  Stages stages(bed.object, kInner, {});
  stages.FillTree();
  int pair[] = {1, 2};
  Printed([&] { bed.object.CountingVirtualNodeToCellBySearchNumber(1, pair, 1.0, 0.0, 0.0); });
  EXPECT_EQ(Around({}, 2.25), Calls().queries[0].corners);
  EXPECT_EQ(Around({}, 3.75), Calls().queries[1].corners);
}

}  // namespace
}  // namespace zyn_test

#include "foundation/GrowingBoxSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "foundation/DQVector.h"
#include "host/ZYNOptKer.h"

// The answer of the search against the same growth step by step, near the entries and so far away that the search
// leaps. Distances differ from axis to axis, so that no two axes may be taken for each other.

namespace zyn_test::growing_box_search_test {
namespace {

/// Points with the numbers 1, 2, 3... in a tree.
class Entries {
 public:
  explicit Entries(std::vector<DQVector> const& points) : points_(points) {
    for (DQVector const& p : points_) box_.Widen(p.x, p.y, p.z);
    tree_.SetADTreeRange(box_.xmax, box_.ymax, box_.zmax, box_.xmin, box_.ymin, box_.zmin, 1, 10000, 200000);
    int id = 0;
    for (DQVector const& p : points_) tree_.AddSurfaceToADTree(++id, p.x, p.y, p.z, p.x, p.y, p.z);
  }

  CZYNOptKer& Tree() { return tree_; }
  BoundingBox const& Box() const { return box_; }
  int Count() const { return static_cast<int>(points_.size()); }

  /// Numbers of the points in the cube around `at`, ascending.
  std::vector<int> InCube(DQVector const& at, double d) const {
    std::vector<int> ids;
    for (std::size_t i = 0; i < points_.size(); ++i) {
      DQVector const& p = points_[i];
      bool const isIn = at.x - d <= p.x && p.x <= at.x + d && at.y - d <= p.y && p.y <= at.y + d &&
                        at.z - d <= p.z && p.z <= at.z + d;
      if (isIn) ids.push_back(static_cast<int>(i) + 1);
    }
    return ids;
  }

 private:
  std::vector<DQVector> points_;
  BoundingBox box_;
  CZYNOptKer tree_;
};

std::vector<int> Ascending(GrowingBoxSearch::Answer const& answer) {
  std::vector<int> ids(answer.ids, answer.ids + answer.count);
  std::sort(ids.begin(), ids.end());
  return ids;
}

std::vector<DQVector> const kPoints = {{0.0, 0.0, 0.0}, {1.0, 0.25, 0.5}, {2.0, 0.5, 1.5}, {3.0, 0.75, 2.0}};

BoundingBox UnitCube() {
  BoundingBox box;
  box.Widen(0.0, 0.0, 0.0);
  box.Widen(1.0, 1.0, 1.0);
  return box;
}

/// Expects the first of the cubes with 1, 2, 3... steps that holds as many as wanted.
void ExpectSameAsStepByStep(Entries& entries, DQVector const& at, double step, int wanted) {
  int k = 1;
  while (static_cast<int>(entries.InCube(at, k * step).size()) < wanted) ++k;
  auto const answer = GrowingBoxSearch(entries.Tree(), entries.Box(), entries.Count(), step)
                          .AtLeast(wanted, at.x, at.y, at.z);
  EXPECT_EQ(Ascending(answer), entries.InCube(at, k * step)) << wanted << " wanted, " << k << " steps";
  EXPECT_EQ(answer.halfWidth, k * step) << wanted << " wanted";
}

TEST(GrowingBoxSearch, AnswersFromTheFirstCubeThatHoldsEnough) {
  Entries entries(kPoints);
  for (int wanted = 0; wanted <= 4; ++wanted) {
    ExpectSameAsStepByStep(entries, {0.5, 0.25, 0.75}, 0.25, wanted);
    ExpectSameAsStepByStep(entries, {-1.0, 3.0, 5.0}, 0.125, wanted);
  }
}

TEST(GrowingBoxSearch, LeapsToTheCubeThatStepsWouldReach) {
  Entries entries(kPoints);
  DQVector const farAway[] = {{40.0, 0.0, 0.0}, {0.0, -50.0, 0.0}, {0.0, 0.0, 60.0}, {-9.0, 20.0, -47.0}};
  for (DQVector const& at : farAway)
    for (int wanted = 1; wanted <= 4; ++wanted) ExpectSameAsStepByStep(entries, at, 1.0 / 64.0, wanted);
}

// The last cube of the single steps and the first ones beyond.
TEST(GrowingBoxSearch, LeapsFromTheStepAfterTheLastOneByOne) {
  Entries entries({{0.0, 0.0, 0.0}});
  for (double const distance : {999.0, 1000.0, 1001.0, 1002.0, 2000.0, 2001.0, 3000.0})
    ExpectSameAsStepByStep(entries, {0.0, distance, 0.0}, 1.0, 1);
}

TEST(GrowingBoxSearch, EndsFarAwayWithAllEntriesIfTheyAreFewer) {
  Entries entries(kPoints);
  DQVector const at = {-9.0, 20.0, -47.0};
  auto const answer = GrowingBoxSearch(entries.Tree(), entries.Box(), entries.Count(), 1.0 / 64.0)
                          .AtLeast(5, at.x, at.y, at.z);
  EXPECT_EQ(4, answer.count);
  // The first cube that covers the bounds: z reaches from -47 to 2.
  EXPECT_EQ(49.0, answer.halfWidth);
}

TEST(GrowingBoxSearch, EndsOnceItCoversTheBoundsOfAllEntries) {
  Entries entries(kPoints);
  auto const answer =
      GrowingBoxSearch(entries.Tree(), entries.Box(), entries.Count(), 0.5).AtLeast(9, 1.0, 0.0, 0.0);
  EXPECT_EQ(4, answer.count);
  EXPECT_EQ(2.0, answer.halfWidth);  // x reaches from 1 to 3, z from 0 to 2
}

/// Points as boxes of half-width 1e-6, as the operators enter them.
CZYNOptKer BoxesAround(std::vector<DQVector> const& points) {
  constexpr double d = 1e-6;
  CZYNOptKer tree;
  int id = 0;
  for (DQVector const& p : points)
    tree.AddSurfaceToADTree(++id, p.x + d, p.y + d, p.z + d, p.x - d, p.y - d, p.z - d);
  return tree;
}

// The two points are as many steps apart as the cube needs, up to the rounding of the products: now and then that cube
// meets the box around the far point without covering the point itself.
TEST(GrowingBoxSearch, EndsWithTheFirstCubeThatHoldsAllWhateverTheRounding) {
  for (bool const isKnown : {true, false}) {
    for (int steps = 1; steps <= 2000; steps += steps < 40 ? 1 : 97) {
      double const step = 0.1;
      double const at = static_cast<double>(steps) / 10.0;
      std::vector<DQVector> const points = {{0.0, 0.0, 0.0}, {at, 0.0, 0.0}};
      CZYNOptKer tree = BoxesAround(points);
      BoundingBox box;
      for (DQVector const& p : points) box.Widen(p.x, p.y, p.z);
      GrowingBoxSearch const search =
          isKnown ? GrowingBoxSearch(tree, box, 2, step) : GrowingBoxSearch(tree, box, step);
      auto const answer = search.AtLeast(5, at, 0.0, 0.0);
      EXPECT_EQ(2, answer.count) << steps << " steps";
      EXPECT_EQ(answer.halfWidth, steps * step) << steps << " steps";
    }
  }
}

// Every side decides once: the entries lie between 0 and 1 but for one axis.
TEST(GrowingBoxSearch, CoversEveryBound) {
  for (int side = 0; side < 6; ++side) {
    double far[3] = {0.5, 0.5, 0.5};
    far[side / 2] = side % 2 == 0 ? 7.0 : -6.0;
    Entries entries({{0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {far[0], far[1], far[2]}});
    auto const answer =
        GrowingBoxSearch(entries.Tree(), entries.Box(), entries.Count(), 0.5).AtLeast(4, 0.5, 0.5, 0.5);
    EXPECT_EQ(3, answer.count) << "side " << side;
    EXPECT_EQ(6.5, answer.halfWidth) << "side " << side;
  }
}

// Bounds of [0, 1] say nothing of an entry at z = 30.
TEST(GrowingBoxSearch, GoesOnBeyondEstimatedBoundsWhileTheTreeHoldsEnough) {
  Entries entries({{0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {0.0, 0.0, 30.0}});
  GrowingBoxSearch const search(entries.Tree(), UnitCube(), 0.5);

  auto const enough = search.AtLeast(3, 0.0, 0.0, 0.0);
  EXPECT_EQ((std::vector<int>{1, 2, 3}), Ascending(enough));
  EXPECT_EQ(30.0, enough.halfWidth);

  auto const tooFew = search.AtLeast(4, 0.0, 0.0, 0.0);
  EXPECT_EQ((std::vector<int>{1, 2}), Ascending(tooFew));
  EXPECT_EQ(1.0, tooFew.halfWidth);
}

// The cube that is asked for once more is the one around the point.
TEST(GrowingBoxSearch, AnswersFromTheLastCubeWhenTheTreeHoldsTooFew) {
  Entries entries({{0.0, 0.0, 0.0}, {0.0, -1.0, 1.0}, {-1.0, 0.0, 1.0}, {0.0, 0.0, 30.0}});
  GrowingBoxSearch const search(entries.Tree(), UnitCube(), 0.5);
  auto const tooFew = search.AtLeast(5, 0.0, 0.0, 1.0);
  EXPECT_EQ((std::vector<int>{1, 2, 3}), Ascending(tooFew));
  EXPECT_EQ(1.0, tooFew.halfWidth);
}

// 2000 steps of 1/64 reach 31.25; the leap asks for all entries, too.
TEST(GrowingBoxSearch, LeapsBeyondEstimatedBoundsWhileTheTreeHoldsEnough) {
  Entries entries({{0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {0.0, 0.0, 30.0}});
  GrowingBoxSearch const search(entries.Tree(), UnitCube(), 1.0 / 64.0);
  EXPECT_EQ(30.0, search.AtLeast(3, 0.0, 0.0, 0.0).halfWidth);
  EXPECT_EQ(26.0, search.AtLeast(3, 0.0, -20.0, 4.0).halfWidth);
}

TEST(GrowingBoxSearch, SearchesEverythingWhereNothingGrows) {
  Entries entries(kPoints);
  for (double const step : {0.0, -1.0, static_cast<double>(NAN)}) {
    auto const answer =
        GrowingBoxSearch(entries.Tree(), entries.Box(), entries.Count(), step).AtLeast(5, 1.0, 4.0, 0.5);
    EXPECT_EQ(4, answer.count) << step;
    EXPECT_EQ(4.0, answer.halfWidth) << step;  // to y = 0
  }
  for (double const x : {static_cast<double>(NAN), static_cast<double>(INFINITY)}) {
    GrowingBoxSearch const search(entries.Tree(), entries.Box(), entries.Count(), 0.25);
    EXPECT_EQ(4, search.AtLeast(2, x, 0.0, 0.0).count) << x;
    EXPECT_EQ(4, search.AtLeast(2, 0.0, x, 0.0).count) << x;
    EXPECT_EQ(4, search.AtLeast(2, 0.0, 0.0, x).count) << x;
  }
}

TEST(GrowingBoxSearch, MeasuresTheWayToTheFarthestBound) {
  Entries entries(kPoints);
  GrowingBoxSearch const search(entries.Tree(), entries.Box(), entries.Count(), 0.0);
  EXPECT_EQ(9.0, search.AtLeast(9, 9.0, 0.0, 0.0).halfWidth);
  EXPECT_EQ(12.0, search.AtLeast(9, -9.0, 0.0, 0.0).halfWidth);
  EXPECT_EQ(9.0, search.AtLeast(9, 0.0, 9.0, 0.0).halfWidth);
  EXPECT_EQ(9.75, search.AtLeast(9, 0.0, -9.0, 0.0).halfWidth);
  EXPECT_EQ(9.0, search.AtLeast(9, 0.0, 0.0, 9.0).halfWidth);
  EXPECT_EQ(11.0, search.AtLeast(9, 0.0, 0.0, -9.0).halfWidth);
}

}  // namespace
}  // namespace zyn_test::growing_box_search_test

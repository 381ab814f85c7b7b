#include "cli/study/StudyCondition.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "cli/systems/CellStencil.h"
#include "cli/systems/ConditionEstimate.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

TEST(StudyCondition, SamplesEvenlyAndNotTooMany) {
  EXPECT_EQ((std::vector<int>{1, 2, 3}), SpreadSample(3));
  EXPECT_TRUE(SpreadSample(0).empty());
  for (int const n : {1999, 2000, 2001, 4001, 100000}) {
    std::vector<int> const sample = SpreadSample(n);
    EXPECT_LE(sample.size(), static_cast<std::size_t>(kMostSystems)) << n;
    EXPECT_GE(sample.size(), static_cast<std::size_t>(std::min(n, kMostSystems)) / 3) << n;
    EXPECT_LE(sample.back(), n);
  }
}

TEST(StudyCondition, TakesWhatIsNoNumberForInfinite) {
  StudyCondition const condition = SummariseConditions(TestRanks(), {3.0, std::nan(""), 1.0});
  EXPECT_EQ(3, condition.nSystems);
  EXPECT_EQ(3.0, condition.median);
  EXPECT_EQ(condition.worst, std::numeric_limits<double>::infinity());
  EXPECT_EQ(0, SummariseConditions(TestRanks(), {}).nSystems);
}

TEST(StudyCondition, OfTheGradientIsThatOfEachCellAlone) {
  auto const partition = BoxPartition("box:3,3,3:tet");
  std::vector<double> const all = GradientConditions(*partition, {50.0, false});
  ASSERT_EQ(162u, all.size());
  for (int const cell : {1, 80, 162}) {
    CellStencil const stencil = DeriveCellStencil(*partition, cell, {50.0, false});
    EXPECT_EQ(all[static_cast<std::size_t>(cell) - 1], ConditionEstimate(stencil.matrix, stencil.Order()));
  }
}

TEST(StudyCondition, OfFacesAndPointsGrowsWithTheSpan) {
  auto const partition = BoxPartition("box:4,4,4:hex:perturb=0.1");
  UsableCells usable = FindUsableCells(TestRanks(), *partition, nullptr);
  PointSet points;
  points.x = {0.5, 0.3};
  points.y = {0.5, 0.6};
  points.z = {0.45, 0.4};
  for (int const method : {1, 2, 3, 4}) {
    auto const narrow = FaceConditions(*partition, {method, 5.0, 20, 0.1, false});
    auto const wide = FaceConditions(*partition, {method, 10.0, 20, 0.1, false});
    EXPECT_EQ(narrow.size(), method == 4 ? 288u : 144u);  // two systems a face
    ASSERT_EQ(narrow.size(), wide.size());
    for (std::size_t k = 0; k < wide.size(); ++k) EXPECT_GT(wide[k], narrow[k]) << method;
    if (method == 4) continue;
    auto const narrowPoints = PointConditions(*partition, usable, points, {method, 5.0, 20, 0.1, false});
    auto const widePoints = PointConditions(*partition, usable, points, {method, 10.0, 20, 0.1, false});
    ASSERT_EQ(2u, widePoints.size());
    for (std::size_t k = 0; k < 2; ++k) EXPECT_GT(widePoints[k], narrowPoints[k]) << method;
  }
  EXPECT_TRUE(PointConditions(*partition, usable, {}, {3, 5.0, 20, 0.1, false}).empty());
}

// Two cells at distance d from the face between them and h = d: the matrix [1 k; k 1] of the kernel over its value at
// zero, k = kernel(2 d) / kernel(0), has the condition number (1 + k) / (1 - k).
TEST(StudyCondition, OfAFaceBetweenTwoCellsIsThatOfTheKernel) {
  auto const partition = BoxPartition("box:2,1,1");
  double const span = 4.0, s = 2.0 / span;
  double const k = std::pow(1 - s, 6) * (35 * s * s + 18 * s + 3) / 3.0;
  std::vector<double> const found = FaceConditions(*partition, {2, span, 2, 0.1, false});
  ASSERT_EQ(1u, found.size());
  EXPECT_NEAR(found[0], (1 + k) / (1 - k), 1e-12);
}

}  // namespace
}  // namespace zyngrad

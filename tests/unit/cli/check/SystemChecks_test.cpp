#include "cli/check/SystemChecks.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cli/check/CheckFindings.h"
#include "tests/unit/cli/NotFinite.h"

namespace zyngrad {
namespace {

std::uint32_t FoundIn(std::vector<DQVector> const& points) {
  CheckedSystem system;
  CheckPlaces(points, system);
  return system.findings;
}

TEST(SystemChecks, FindsNothingInATetrahedronOfNeighbours) {
  EXPECT_EQ(0U, FoundIn({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
}

TEST(SystemChecks, FindsMembersAtOnePosition) {
  EXPECT_EQ(kHasCoincidentMembers, FoundIn({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 0}}));
  // Nearer than what the coordinates resolve.
  EXPECT_EQ(kHasCoincidentMembers, FoundIn({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1e-13, 0}}));
  EXPECT_EQ(0U, FoundIn({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1e-9, 0}}));
}

TEST(SystemChecks, FindsAnAxisWithoutExtent) {
  EXPECT_EQ(kHasFlatAxis, FoundIn({{0, 0, 5}, {1, 0, 5}, {0, 1, 5}, {1, 1, 5}}));
  EXPECT_EQ(0U, FoundIn({{0, 0, 0}, {1e6, 0, 0}, {0, 1e6, 0}, {0, 0, 1}}));  // flat, but an extent it has
}

TEST(SystemChecks, FindsFewerNeighboursThanDirections) {
  EXPECT_EQ(kHasFewMembers, FoundIn({{0, 0, 0}, {1, 2, 3}, {3, 1, 2}}));
  // Four members, two of them in one place.
  EXPECT_EQ(FoundIn({{0, 0, 0}, {1, 2, 3}, {3, 1, 2}, {1, 2, 3}}), kHasFewMembers | kHasCoincidentMembers);
  EXPECT_NE(0U, FoundIn({}) & kHasFewMembers);
}

TEST(SystemChecks, JudgesConditionNumbersAndKeepsTheWorst) {
  CheckedSystem system;
  CheckCondition(1e11, system);
  EXPECT_EQ(0U, system.findings);
  CheckCondition(1e13, system);
  EXPECT_EQ(kIsIllConditioned, system.findings);
  CheckCondition(10.0, system);
  EXPECT_EQ(1e13, system.condition);
  CheckCondition(kInfinity, system);
  EXPECT_EQ(system.findings, kIsIllConditioned | kIsSingular);
  CheckCondition(kNaN, system);
  EXPECT_NE(0U, system.findings & kHasSystemNotFinite);
  EXPECT_TRUE(std::isnan(system.condition));
  CheckCondition(1.0, system);
  EXPECT_TRUE(std::isnan(system.condition));
}

TEST(SystemChecks, TakesSlopesRelativeToTheirWeightsAndValuesAsTheyAre) {
  RowSum row;
  for (double const weight : {2000.0, -1999.0}) row.Add(weight);
  EXPECT_EQ(0.0, row.DistanceFromOne());
  EXPECT_EQ(row.DistanceFromZero(), 1.0 / 3999.0);
  EXPECT_EQ(0.0, RowSum().DistanceFromZero());
}

TEST(SystemChecks, FindsRowsThatAreNotFiniteOrDoNotSumToTheirIdeal) {
  RowSum sound, off, broken;
  sound.Add(1.0);
  off.Add(1.5);
  broken.Add(1.0);
  broken.Add(kInfinity);
  CheckedSystem system;
  CheckRowOfValue(sound, 1e-3, system);
  EXPECT_EQ(0U, system.findings);
  CheckRowOfValue(off, 1e-3, system);
  EXPECT_EQ(kHasRowSumOff, system.findings);
  EXPECT_EQ(0.5, system.rowSum);
  CheckRowOfSlope(broken, 1e-3, system);
  EXPECT_EQ(system.findings, kHasRowSumOff | kHasRowNotFinite);
  EXPECT_TRUE(std::isnan(system.rowSum));
}

TEST(SystemChecks, FindsWeightsOfAValueThatMagnifyErrors) {
  RowSum sound, large;
  for (double const weight : {5.5, -4.5}) sound.Add(weight);  // ten in magnitude, which is still let pass
  for (double const weight : {6.0, -5.0}) large.Add(weight);
  CheckedSystem system;
  CheckRowOfValue(sound, 1e-3, system);
  CheckRowOfSlope(large, 1.0, system);
  EXPECT_EQ(0U, system.findings);
  CheckRowOfValue(large, 1e-3, system);
  EXPECT_EQ(kHasLargeWeights, system.findings);
}

}  // namespace
}  // namespace zyngrad

#include "cli/check/CheckPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "cli/check/CheckFindings.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"
#include "tests/unit/cli/check/CountedFindings.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

std::vector<CheckedSystem> Points(HostPartition& partition, InterpolationSettings const& settings) {
  UsableCells usable = FindUsableCells(TestRanks(), partition, nullptr);
  PointSet points;
  points.x = {0.3, 0.62};
  points.y = {0.41, 0.55};
  points.z = {0.52, 0.48};
  auto const owners = FindPointOwners(TestRanks(), partition, usable, points);
  return CheckPoints(partition, usable, points, owners, 0, settings, kNowhere);
}

TEST(CheckPoints, FindNothingWrongInASoundBoxByAnyMethod) {
  auto const box = BoxPartition("box:5,5,5:tet");
  for (int const method : {1, 2, 3}) {
    double const span = method == 3 ? 500.0 : 50.0;  // two steps give a constant less exactly than one
    auto const points = Points(*box, {method, span, 20, 0.1, false});
    ASSERT_EQ(2U, points.size());
    EXPECT_EQ(2, points[1].number);
    for (CheckedSystem const& point : points) {
      EXPECT_EQ("", InWords(point.findings)) << "method " << method;
      EXPECT_GT(point.members, 3);
      EXPECT_GT(point.condition, 1.0);
    }
  }
}

TEST(CheckPoints, FindFewMembersAndRowsThatAreNotFinite) {
  auto const box = BoxPartition("box:5,5,5");
  EXPECT_EQ(2, Count(Points(*box, {2, 50.0, 3, 0.1, false}), kHasFewMembers));
  EXPECT_EQ(2, Count(Points(*box, {2, 1e60, 20, 0.1, false}), kHasRowNotFinite));
}

TEST(CheckPoints, AreThoseOfTheOwnRank) {
  auto const box = BoxPartition("box:3,3,3");
  UsableCells usable = FindUsableCells(TestRanks(), *box, nullptr);
  PointSet points;
  points.x = points.y = points.z = {0.5, 0.6};
  std::vector<PointOwner> const owners = {{0.1, 1}, {0.1, 0}};
  auto const own = CheckPoints(*box, usable, points, owners, 0, {2, 50.0, 20, 0.1, false}, kNowhere);
  ASSERT_EQ(1U, own.size());
  EXPECT_EQ(2, own.front().number);
  EXPECT_TRUE(CheckPoints(*box, usable, points, owners, 2, {2, 50.0, 20, 0.1, false}, kNowhere).empty());
}

}  // namespace
}  // namespace zyngrad

#include "cli/check/CheckInterpolation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "cli/check/CheckFindings.h"
#include "cli/study/StudyCondition.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

constexpr char const* kNowhere = "/dev/null";

int Count(std::vector<CheckedSystem> const& systems, std::uint32_t finding) {
  return static_cast<int>(std::count_if(systems.begin(), systems.end(), [finding](CheckedSystem const& s) {
    return (s.findings & finding) != 0;
  }));
}

std::vector<CheckedSystem> Points(HostPartition& partition, InterpolationSettings const& settings) {
  UsableCells usable = FindUsableCells(TestRanks(), partition, nullptr);
  PointSet points;
  points.x = {0.3, 0.62};
  points.y = {0.41, 0.55};
  points.z = {0.52, 0.48};
  auto const owners = FindPointOwners(TestRanks(), partition, usable, points);
  return CheckPoints(partition, usable, points, owners, 0, settings, kNowhere);
}

TEST(CheckFaces, FindNothingWrongInASoundBoxByAnyMethod) {
  auto const box = BoxPartition("box:4,4,4:tet");
  for (int const method : {1, 2, 3, 4}) {
    auto const faces = CheckFaces(*box, FaceKind::Inner, {method, 50.0, 20, 0.0, false}, kNowhere);
    ASSERT_EQ(faces.size(), static_cast<std::size_t>(box->mesh()->NInnerFaces));
    for (CheckedSystem const& face : faces) {
      EXPECT_EQ(InWords(face.findings), "") << "method " << method;
      EXPECT_LT(face.number, face.other);
    }
  }
}

TEST(CheckFaces, TakeTheZeroValuesOfBoundaryFacesForWhatTheyAre) {
  auto const box = BoxPartition("box:4,4,4");
  EXPECT_EQ(Count(CheckFaces(*box, FaceKind::Wall, {4, 50.0, 20, 0.0, false}, kNowhere), kHasRowSumOff), 0);
  for (CheckedSystem const& face : CheckFaces(*box, FaceKind::Wall, {2, 50.0, 20, 0.0, false}, kNowhere)) {
    EXPECT_EQ(face.other, 0);
    EXPECT_EQ(face.findings & kHasRowSumOff, 0U);
  }
}

TEST(CheckFaces, FindTwoCentresInOnePlace) {
  auto const box = BoxPartition("box:4,4,4");
  CZYN3DFiniteVolumeMesh& m = *box->mesh();
  int const a = m.ijCV[10], b = m.ij[10];
  m.xc[b] = m.xc[a], m.yc[b] = m.yc[a], m.zc[b] = m.zc[a];
  for (int const method : {2, 4}) {
    auto const faces = CheckFaces(*box, FaceKind::Inner, {method, 50.0, 20, 0.0, false}, kNowhere);
    EXPECT_GT(Count(faces, kHasCoincidentMembers), 0) << "method " << method;
  }
  auto const nearest = CheckFaces(*box, FaceKind::Inner, {2, 50.0, 20, 0.0, false}, kNowhere);
  EXPECT_EQ(Count(nearest, kHasCoincidentMembers), Count(nearest, kIsSingular));
}

TEST(CheckFaces, FindRowsThatAreFarFromOneOrNotFinite) {
  auto const box = BoxPartition("box:4,4,4");
  int const nFaces = box->mesh()->NInnerFaces;
  EXPECT_EQ(Count(CheckFaces(*box, FaceKind::Inner, {2, 2.0, 20, 0.0, false}, kNowhere), kHasRowSumOff),
            nFaces);
  EXPECT_EQ(Count(CheckFaces(*box, FaceKind::Inner, {2, 1e60, 20, 0.0, false}, kNowhere), kHasRowNotFinite),
            nFaces);
}

TEST(CheckFaces, HaveTheConditionNumbersOfTheStudies) {
  auto const box = BoxPartition("box:3,3,3:tet:perturb=0.1,seed=2");
  InterpolationSettings const settings = {2, 20.0, 12, 0.0, false};
  auto const faces = CheckFaces(*box, FaceKind::Inner, settings, kNowhere);
  std::vector<double> const conditions = FaceConditions(*box, settings);
  ASSERT_EQ(faces.size(), conditions.size());
  for (std::size_t f = 0; f < faces.size(); ++f) EXPECT_EQ(faces[f].condition, conditions[f]);
}

TEST(CheckPoints, FindNothingWrongInASoundBoxByAnyMethod) {
  auto const box = BoxPartition("box:5,5,5:tet");
  for (int const method : {1, 2, 3}) {
    double const span = method == 3 ? 500.0 : 50.0;  // two steps give a constant less exactly than one
    auto const points = Points(*box, {method, span, 20, 0.1, false});
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[1].number, 2);
    for (CheckedSystem const& point : points) {
      EXPECT_EQ(InWords(point.findings), "") << "method " << method;
      EXPECT_GT(point.members, 3);
      EXPECT_GT(point.condition, 1.0);
    }
  }
}

TEST(CheckPoints, FindFewMembersAndRowsThatAreNotFinite) {
  auto const box = BoxPartition("box:5,5,5");
  EXPECT_EQ(Count(Points(*box, {2, 50.0, 3, 0.1, false}), kHasFewMembers), 2);
  EXPECT_EQ(Count(Points(*box, {2, 1e60, 20, 0.1, false}), kHasRowNotFinite), 2);
}

TEST(CheckPoints, AreThoseOfTheOwnRank) {
  auto const box = BoxPartition("box:3,3,3");
  UsableCells usable = FindUsableCells(TestRanks(), *box, nullptr);
  PointSet points;
  points.x = points.y = points.z = {0.5, 0.6};
  std::vector<PointOwner> const owners = {{0.1, 1}, {0.1, 0}};
  auto const own = CheckPoints(*box, usable, points, owners, 0, {2, 50.0, 20, 0.1, false}, kNowhere);
  ASSERT_EQ(own.size(), 1U);
  EXPECT_EQ(own.front().number, 2);
  EXPECT_TRUE(CheckPoints(*box, usable, points, owners, 2, {2, 50.0, 20, 0.1, false}, kNowhere).empty());
}

}  // namespace
}  // namespace zyngrad

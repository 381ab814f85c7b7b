#include "cli/check/CheckFaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "cli/check/CheckFindings.h"
#include "cli/study/StudyCondition.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/check/CountedFindings.h"

namespace zyngrad {
namespace {

TEST(CheckFaces, FindNothingWrongInASoundBoxByAnyMethod) {
  auto const box = BoxPartition("box:4,4,4:tet");
  for (int const method : {1, 2, 3, 4}) {
    auto const faces = CheckFaces(*box, FaceKind::Inner, {method, 50.0, 20, 0.0, false}, kNowhere);
    ASSERT_EQ(faces.size(), static_cast<std::size_t>(box->mesh()->NInnerFaces));
    for (CheckedSystem const& face : faces) {
      EXPECT_EQ("", InWords(face.findings)) << "method " << method;
      EXPECT_LT(face.number, face.other);
    }
  }
}

TEST(CheckFaces, TakeTheZeroValuesOfBoundaryFacesForWhatTheyAre) {
  auto const box = BoxPartition("box:4,4,4");
  EXPECT_EQ(0, Count(CheckFaces(*box, FaceKind::Wall, {4, 50.0, 20, 0.0, false}, kNowhere), kHasRowSumOff));
  for (CheckedSystem const& face : CheckFaces(*box, FaceKind::Wall, {2, 50.0, 20, 0.0, false}, kNowhere)) {
    EXPECT_EQ(0, face.other);
    EXPECT_EQ(0U, face.findings & kHasRowSumOff);
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

}  // namespace
}  // namespace zyngrad

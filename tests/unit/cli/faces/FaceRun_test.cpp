#include "cli/faces/FaceRun.h"

#include <gtest/gtest.h>

#include "cli/field/TestField.h"
#include "cli/operators/TemporarySettings.h"
#include "cli/options/InterpolationOptions.h"
#include "reference_host/parallel/LoadMesh.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

/// A small box with the settings of its operator.
class FaceRunOnBox : public testing::Test {
 protected:
  FaceRunOnBox() : mesh_(reference_host::LoadMesh(TestRanks().communicator(), "box:5,5,5:tet", {}, {})) {}

  reference_host::LoadedMesh mesh_;
  TemporarySettings settings_{*mesh_.partition};
};

TEST_F(FaceRunOnBox, GivesFacesTheSumOfTheirWeightsForAConstant) {
  std::vector<double> ones = MakeCellValues(TestRanks(), *mesh_.partition, Expression("1"), "the field");
  for (int const method : {1, 2, 3, 4}) {
    settings_.Write(FaceSettingsText({method, 100.0, 20, 0.1, false}));
    FaceRun const run = RunFaces(TestRanks(), mesh_, FaceKind::Inner, ones, "/dev/null");
    for (int f = 1; f <= TargetedFacesOf(*mesh_.partition, FaceKind::Inner).count; ++f) {
      auto const i = static_cast<std::size_t>(f);
      EXPECT_EQ(run.rows.value[i], run.rows.rowSum[i]) << "method " << method << " face " << f;
      EXPECT_NEAR(1.0, run.rows.rowSum[i], 1e-3) << "method " << method << " face " << f;
      EXPECT_GT(run.rows.members[i], 1);
    }
  }
}

TEST_F(FaceRunOnBox, GivesNoValuesOnWallsByMethodFour) {
  std::vector<double> ones = MakeCellValues(TestRanks(), *mesh_.partition, Expression("1"), "the field");
  settings_.Write(FaceSettingsText({4, 1000.0, 20, 0.1, false}));
  FaceRun const run = RunFaces(TestRanks(), mesh_, FaceKind::Wall, ones, "/dev/null");
  for (std::size_t f = 1; f < run.rows.value.size(); ++f) EXPECT_EQ(0.0, run.rows.value[f]);
}

}  // namespace
}  // namespace zyngrad

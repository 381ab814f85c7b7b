// Both operators on a small box, through what the commands call.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "cli/base/TemporaryFolder.h"
#include "cli/faces/FaceRun.h"
#include "cli/field/TestField.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/output/RunSettings.h"
#include "cli/points/PointRun.h"
#include "reference_host/parallel/LoadMesh.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

/// A loaded mesh that finds its settings in a folder of its own.
class InterpolationRun : public testing::Test {
 protected:
  InterpolationRun() : mesh_(reference_host::LoadMesh(TestRanks().communicator(), "box:5,5,5:tet", {}, {})) {}

  void Tell(std::string const& settings) {
    mesh_.partition->SetBaseFileName(WriteSettingsText(folder_.path() + "/settings.rbf", settings));
  }
  std::string Log() const { return folder_.path() + "/log.txt"; }

  TemporaryFolder folder_;
  reference_host::LoadedMesh mesh_;
};

TEST_F(InterpolationRun, GivesFacesTheSumOfTheirWeightsForAConstant) {
  std::vector<double> ones = MakeCellValues(TestRanks(), *mesh_.partition, Expression("1"), "the field");
  for (int const method : {1, 2, 3, 4}) {
    Tell(FaceSettingsText({method, 100.0, 20, 0.1, false}));
    FaceRun const run = RunFaces(TestRanks(), mesh_, FaceKind::Inner, ones, Log());
    for (int f = 1; f <= TargetedFacesOf(*mesh_.partition, FaceKind::Inner).count; ++f) {
      auto const i = static_cast<std::size_t>(f);
      EXPECT_EQ(run.rows.value[i], run.rows.rowSum[i]) << "method " << method << " face " << f;
      EXPECT_NEAR(run.rows.rowSum[i], 1.0, 1e-3) << "method " << method << " face " << f;
      EXPECT_GT(run.rows.members[i], 1);
    }
  }
}

TEST_F(InterpolationRun, GivesNoValuesOnWallsByMethodFour) {
  std::vector<double> ones = MakeCellValues(TestRanks(), *mesh_.partition, Expression("1"), "the field");
  Tell(FaceSettingsText({4, 1000.0, 20, 0.1, false}));
  FaceRun const run = RunFaces(TestRanks(), mesh_, FaceKind::Wall, ones, Log());
  for (std::size_t f = 1; f < run.rows.value.size(); ++f) EXPECT_EQ(run.rows.value[f], 0.0);
}

TEST_F(InterpolationRun, GivesThePointAtACellTheCellsValueAndUsesNoUnusableCell) {
  Expression const half("x-0.4"), field("x + 2*y - z");
  UsableCells usable = FindUsableCells(TestRanks(), *mesh_.partition, &half);
  std::vector<double> values = MakeCellValues(TestRanks(), *mesh_.partition, field, "the field");
  CZYN3DFiniteVolumeMesh const& mesh = *mesh_.partition->mesh();
  PointSet points;
  for (int c = 1; c <= mesh.NCell; ++c) {
    if (!usable.Contains(c)) {
      values[static_cast<std::size_t>(c)] = std::numeric_limits<double>::quiet_NaN();
    } else {
      points.x.push_back(mesh.xc[c]);
      points.y.push_back(mesh.yc[c]);
      points.z.push_back(mesh.zc[c]);
    }
  }
  ASSERT_GT(points.size(), 100U);
  auto const owners = FindPointOwners(TestRanks(), *mesh_.partition, usable, points);
  for (int const method : {1, 2, 3}) {
    Tell(PointSettingsText({method, 20.0, 20, 0.1, false}));
    PointRun const run = RunPoints(TestRanks(), mesh_, usable, points, owners, values, Log());
    ASSERT_EQ(run.values.value.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
      // A span of 20 keeps the condition numbers near 1e5. Method 3 may seed the stencil with the second nearest cell
      // alone; then the value comes from the nodes around it, off by less than the field changes over a cell.
      double const tolerance = method == 3 ? 0.2 : 1e-9;
      EXPECT_NEAR(run.values.value[i], field.Value(points.x[i], points.y[i], points.z[i]), tolerance)
          << method;
      EXPECT_EQ(run.values.isRowFinite[i], 1);
      EXPECT_GE(run.values.members[i], 4);
    }
  }
}

TEST_F(InterpolationRun, TakesNoPointsAtAll) {
  UsableCells usable = FindUsableCells(TestRanks(), *mesh_.partition, nullptr);
  std::vector<double> values(usable.mark.size(), 1.0);
  PointRun const run = RunPoints(TestRanks(), mesh_, usable, {}, {}, values, Log());
  EXPECT_TRUE(run.values.value.empty());
  EXPECT_TRUE(run.values.members.empty());
}

}  // namespace
}  // namespace zyngrad

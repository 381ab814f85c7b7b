#include "cli/points/PointRun.h"

#include <gtest/gtest.h>

#include <limits>

#include "cli/field/TestField.h"
#include "cli/operators/TemporarySettings.h"
#include "cli/options/InterpolationOptions.h"
#include "reference_host/parallel/LoadMesh.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

/// A small box with the settings of its operator.
class PointRunOnBox : public testing::Test {
 protected:
  PointRunOnBox() : mesh_(reference_host::LoadMesh(TestRanks().communicator(), "box:5,5,5:tet", {}, {})) {}

  reference_host::LoadedMesh mesh_;
  TemporarySettings settings_{*mesh_.partition};
};

TEST_F(PointRunOnBox, GivesThePointAtACellTheCellsValueAndUsesNoUnusableCell) {
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
    settings_.Write(PointSettingsText({method, 20.0, 20, 0.1, false}));
    PointRun const run = RunPoints(TestRanks(), mesh_, usable, points, owners, values, "/dev/null");
    ASSERT_EQ(run.values.value.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
      // A span of 20 keeps the condition numbers near 1e5. Method 3 may seed the stencil with the second nearest cell
      // alone; then the value comes from the nodes around it, off by less than the field changes over a cell.
      double const tolerance = method == 3 ? 0.2 : 1e-9;
      EXPECT_NEAR(run.values.value[i], field.Value(points.x[i], points.y[i], points.z[i]), tolerance)
          << method;
      EXPECT_EQ(1, run.values.isRowFinite[i]);
      EXPECT_GE(run.values.members[i], 4);
    }
  }
}

TEST_F(PointRunOnBox, TakesNoPointsAtAll) {
  UsableCells usable = FindUsableCells(TestRanks(), *mesh_.partition, nullptr);
  std::vector<double> values(usable.mark.size(), 1.0);
  PointRun const run = RunPoints(TestRanks(), mesh_, usable, {}, {}, values, "/dev/null");
  EXPECT_TRUE(run.values.value.empty());
  EXPECT_TRUE(run.values.members.empty());
}

}  // namespace
}  // namespace zyngrad

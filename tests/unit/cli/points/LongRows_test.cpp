#include "cli/points/LongRows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <string>

#include "cli/base/TemporaryFolder.h"
#include "cli/field/TestField.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/output/RunSettings.h"
#include "cli/points/PointRun.h"
#include "reference_host/parallel/LoadMesh.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

/// `n` tetrahedra around the edge between the nodes 1 and 2, all of whose outer faces are a wall.
void WriteFan(std::string const& file, int n) {
  std::ofstream out(file);
  out << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$PhysicalNames\n1\n2 1 \"wall\"\n$EndPhysicalNames\n$Nodes\n"
      << n + 2 << "\n1 0 0 -0.5\n2 0 0 0.5\n";
  for (int i = 0; i < n; ++i) {
    double const angle = 2.0 * std::acos(-1.0) * i / n;
    out << i + 3 << ' ' << std::cos(angle) << ' ' << std::sin(angle) << " 0\n";
  }
  out << "$EndNodes\n$Elements\n" << 3 * n << '\n';
  for (int i = 0; i < n; ++i) {
    int const a = i + 3, b = (i + 1) % n + 3;
    out << 3 * i + 1 << " 2 2 1 1 1 " << a << ' ' << b << '\n'
        << 3 * i + 2 << " 2 2 1 1 2 " << a << ' ' << b << '\n'
        << 3 * i + 3 << " 4 2 1 1 1 " << a << ' ' << b << " 2\n";
  }
  out << "$EndElements\n";
}

class Fan : public testing::Test {
 protected:
  static constexpr int kCells = 40;

  Fan() {
    WriteFan(folder_.path() + "/fan.msh", kCells);
    mesh_ = reference_host::LoadMesh(TestRanks().communicator(), folder_.path() + "/fan.msh", {}, {});
    usable_ = FindUsableCells(TestRanks(), *mesh_.partition, nullptr);
  }

  TemporaryFolder folder_;
  reference_host::LoadedMesh mesh_;
  UsableCells usable_;
};

TEST_F(Fan, HasTwoNodesWithLongRows) {
  LongRows const rows = FindLongRows(TestRanks(), *mesh_.partition, &usable_, kCells);
  EXPECT_EQ(2, rows.nNodes);
  EXPECT_EQ(kCells, rows.mostCells);
  EXPECT_EQ(1, rows.node);
  EXPECT_EQ(-0.5, rows.at[2]);
  EXPECT_NEAR(rows.nOperations, 2 * 2.0 / 3.0 * kCells * kCells * kCells, 1e-6);
  EXPECT_EQ(0, FindLongRows(TestRanks(), *mesh_.partition, &usable_, kCells + 1).nNodes);
}

// At either end of the edge a cell has one face on the wall, whose ghost cell is a member of the row, too.
TEST_F(Fan, CountsGhostCellsForFaces) {
  EXPECT_EQ(FindLongRows(TestRanks(), *mesh_.partition, nullptr, kCells).mostCells, 2 * kCells);
}

TEST_F(Fan, CountsOnlyUsableCellsForPoints) {
  Expression const body("x");
  UsableCells const half = FindUsableCells(TestRanks(), *mesh_.partition, &body);
  EXPECT_EQ(FindLongRows(TestRanks(), *mesh_.partition, &half, 10).mostCells, half.nCells);
}

TEST_F(Fan, WarnsOfNodeRowAndCostBeforeTheRun) {
  std::string const warning =
      LongRowWarning(TestRanks(), *mesh_.partition, &usable_, "--search-method 2", kCells);
  for (char const* part : {"node 1 at (0, 0, -0.5) has 40 cells around it", "8.5e+04 operations",
                           "all 2 such nodes", "--search-method 2 avoids this"})
    EXPECT_NE(warning.find(part), std::string::npos) << part << "\nin\n" << warning;
  EXPECT_EQ("", LongRowWarning(TestRanks(), *mesh_.partition, &usable_, "--search-method 2"));
}

// What the warning promises is what the operator does: the stencil has every cell of the row, and that of the
// method it advises has not.
TEST_F(Fan, HasStencilsAsLongAsTheRowByMethodThreeOnly) {
  PointSet points;
  points.x = {0.3};
  points.y = points.z = {0.1};
  std::vector<double> field = MakeCellValues(TestRanks(), *mesh_.partition, Expression("x"), "the field");
  auto const owners = FindPointOwners(TestRanks(), *mesh_.partition, usable_, points);
  auto const members = [&](int method) {
    mesh_.partition->SetBaseFileName(WriteSettingsText(folder_.path() + "/settings.rbf",
                                                       PointSettingsText({method, 500.0, 20, 0.1, false})));
    return RunPoints(TestRanks(), mesh_, usable_, points, owners, field, "/dev/null").values.members.front();
  };
  EXPECT_EQ(members(kMethodByNodes), FindLongRows(TestRanks(), *mesh_.partition, &usable_, kCells).mostCells);
  EXPECT_EQ(20, members(2));
}

}  // namespace
}  // namespace zyngrad

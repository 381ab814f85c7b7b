#include "cli/systems/CellStencil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <sstream>

#include "cli/systems/CellStencilReport.h"
#include "cli/systems/RadialBasisRemarks.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

using reference_host::BoundaryGroup;
using reference_host::HostPartition;

/// A box with two symmetry planes, at zmin and ymin.
std::unique_ptr<HostPartition> BoxOnSymmetry(std::string const& spec) {
  reference_host::FaceMesh mesh = BoxWithGroups(spec);
  for (auto& patch : mesh.patches) {
    if (patch.name == "wall_zmin" || patch.name == "wall_ymin") patch.group = BoundaryGroup::Symmetry;
  }
  std::vector<int> const partOfCell(static_cast<std::size_t>(mesh.nCells), 0);
  return std::make_unique<HostPartition>(SplitMesh(mesh, partOfCell, 1).front());
}

int CellNumbered(HostPartition const& partition, std::int64_t number) {
  auto const& numbers = partition.globalCell();
  return static_cast<int>(std::find(numbers.begin() + 1, numbers.end(), number) - numbers.begin());
}

TEST(CellStencil, OfTheMiddleCellOfABoxHasItsSixNeighbours) {
  auto const partition = BoxPartition("box:3,3,3");
  CellStencil const stencil = DeriveCellStencil(*partition, CellNumbered(*partition, 14), {});
  ASSERT_EQ(7U, stencil.members.size());
  EXPECT_EQ(14, stencil.members.front().cell);
  for (StencilMember const& member : stencil.members) {
    EXPECT_EQ("interior", member.place);
    EXPECT_FALSE(member.atOrigin);
  }
  EXPECT_NEAR(stencil.supportLength, 1.0 / 3.0, 1e-15);
  EXPECT_NEAR(stencil.extent.z, 2.0 / 3.0, 1e-15);
  EXPECT_EQ(500.0, stencil.settings.span);
  EXPECT_NEAR(0.0, stencil.SumOfWeights().x, 1e-12);
}

TEST(CellStencil, HasTheWeightsThatSolveItsSystem) {
  auto const partition = BoxPartition("box:3,3,3:tet:perturb=0.2,seed=3");
  for (bool const shapeNormalize : {false, true}) {
    CellStencil const stencil = DeriveCellStencil(*partition, 1, {5.0, shapeNormalize});
    std::size_t const n = stencil.members.size();
    ASSERT_EQ(stencil.matrix.size(), (n + 1) * (n + 1));
    // A_kj is the kernel between members k and j; row 0 is centred on the cell, where the kernel has no slope.
    double slope = stencil.multiplier.x, last = 0.0;
    for (std::size_t k = 0; k < n; ++k) {
      EXPECT_EQ(3.0, stencil.matrix[k * (n + 1) + k]);
      slope += stencil.matrix[k] * stencil.members[k].weight.x;
      last += stencil.matrix[n * (n + 1) + k] * stencil.members[k].weight.x;
    }
    EXPECT_NEAR(0.0, slope, 1e-11);
    EXPECT_NEAR(0.0, last, 1e-11);
  }
}

TEST(CellStencil, NamesTheBoundaryOfAFace) {
  auto const partition = BoxPartition("box:3,3,3");
  CellStencil const stencil = DeriveCellStencil(*partition, CellNumbered(*partition, 1), {});
  std::vector<std::string> boundaries;
  for (StencilMember const& member : stencil.members) {
    if (member.cell == 0) boundaries.push_back(member.place);
  }
  std::sort(boundaries.begin(), boundaries.end());
  EXPECT_EQ((std::vector<std::string>{"inlet", "wall_ymin", "wall_zmin"}), boundaries);
}

TEST(CellStencil, MarksTheSideCellsOfSymmetryFaces) {
  auto const partition = BoxOnSymmetry("box:3,3,3");
  CellStencil const stencil = DeriveCellStencil(*partition, CellNumbered(*partition, 5), {});
  auto const isMarked = [](StencilMember const& member) { return member.atOrigin; };
  ASSERT_EQ(1, std::count_if(stencil.members.begin(), stencil.members.end(), isMarked));
  auto const marked = std::find_if(stencil.members.begin(), stencil.members.end(), isMarked);
  EXPECT_EQ("wall_zmin", marked->place);
  EXPECT_EQ(0.0, marked->point.x);
  std::ostringstream report;
  PrintCellStencil(report, stencil);
  EXPECT_NE(report.str().find("1 member stands at the origin"), std::string::npos) << report.str();
}

TEST(CellStencil, LeavesTheHostAlive) {
  auto const partition = BoxPartition("box:2,2,2");
  DeriveCellStencil(*partition, 1, {});
  EXPECT_EQ(0, partition->partitionFaces()->NParInterFace());
  EXPECT_EQ(7U, DeriveCellStencil(*partition, 2, {}).members.size());
}

TEST(CellStencilReport, HasTheSumsAndTheCondition) {
  auto const partition = BoxPartition("box:3,3,3");
  std::ostringstream report;
  PrintCellStencil(report, DeriveCellStencil(*partition, 1, {}));
  for (char const* text :
       {"support radius", "sum of the weights", "multiplier", "both", "of order 8 (1-norm, estimate): "})
    EXPECT_NE(report.str().find(text), std::string::npos) << text;
}

TEST(RadialBasisRemarks, CountCellsBesideSymmetryFacesOnce) {
  auto const box = BoxOnSymmetry("box:4,3,2");
  auto const remarks = RadialBasisRemarks(TestRanks(), *box, {});
  ASSERT_EQ(1U, remarks.size());
  // 4 * 3 at zmin and 4 * 2 at ymin, with an edge of 4 in common.
  EXPECT_NE(remarks.front().find("in 16 cells"), std::string::npos) << remarks.front();
  EXPECT_NE(remarks.front().find("--group NAME=wall"), std::string::npos);
}

TEST(RadialBasisRemarks, AreNoneOnAMeshWithoutSymmetry) {
  EXPECT_TRUE(RadialBasisRemarks(TestRanks(), *BoxPartition("box:2,2,2"), {}).empty());
  EXPECT_EQ(1U, RadialBasisRemarks(TestRanks(), *BoxPartition("box:2,2,2"), {500.0, true}).size());
}

}  // namespace
}  // namespace zyngrad

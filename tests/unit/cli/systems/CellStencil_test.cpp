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
  ASSERT_EQ(stencil.members.size(), 7U);
  EXPECT_EQ(stencil.members.front().cell, 14);
  for (StencilMember const& member : stencil.members) {
    EXPECT_EQ(member.place, "interior");
    EXPECT_FALSE(member.atOrigin);
  }
  EXPECT_NEAR(stencil.supportLength, 1.0 / 3.0, 1e-15);
  EXPECT_NEAR(stencil.extent.z, 2.0 / 3.0, 1e-15);
  EXPECT_EQ(stencil.settings.span, 500.0);
  EXPECT_NEAR(stencil.SumOfWeights().x, 0.0, 1e-12);
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
      EXPECT_EQ(stencil.matrix[k * (n + 1) + k], 3.0);
      slope += stencil.matrix[k] * stencil.members[k].weight.x;
      last += stencil.matrix[n * (n + 1) + k] * stencil.members[k].weight.x;
    }
    EXPECT_NEAR(slope, 0.0, 1e-11);
    EXPECT_NEAR(last, 0.0, 1e-11);
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
  EXPECT_EQ(boundaries, (std::vector<std::string>{"inlet", "wall_ymin", "wall_zmin"}));
}

TEST(CellStencil, MarksTheSideCellsOfSymmetryFaces) {
  auto const partition = BoxOnSymmetry("box:3,3,3");
  CellStencil const stencil = DeriveCellStencil(*partition, CellNumbered(*partition, 5), {});
  auto const isMarked = [](StencilMember const& member) { return member.atOrigin; };
  ASSERT_EQ(std::count_if(stencil.members.begin(), stencil.members.end(), isMarked), 1);
  auto const marked = std::find_if(stencil.members.begin(), stencil.members.end(), isMarked);
  EXPECT_EQ(marked->place, "wall_zmin");
  EXPECT_EQ(marked->point.x, 0.0);
  std::ostringstream report;
  PrintCellStencil(report, stencil);
  EXPECT_NE(report.str().find("1 member stands at the origin"), std::string::npos) << report.str();
}

TEST(CellStencil, LeavesTheHostAlive) {
  auto const partition = BoxPartition("box:2,2,2");
  DeriveCellStencil(*partition, 1, {});
  EXPECT_EQ(partition->partitionFaces()->NParInterFace(), 0);
  EXPECT_EQ(DeriveCellStencil(*partition, 2, {}).members.size(), 7U);
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
  ASSERT_EQ(remarks.size(), 1U);
  // 4 * 3 at zmin and 4 * 2 at ymin, with an edge of 4 in common.
  EXPECT_NE(remarks.front().find("in 16 cells"), std::string::npos) << remarks.front();
  EXPECT_NE(remarks.front().find("--group NAME=wall"), std::string::npos);
}

TEST(RadialBasisRemarks, AreNoneOnAMeshWithoutSymmetry) {
  EXPECT_TRUE(RadialBasisRemarks(TestRanks(), *BoxPartition("box:2,2,2"), {}).empty());
  EXPECT_EQ(RadialBasisRemarks(TestRanks(), *BoxPartition("box:2,2,2"), {500.0, true}).size(), 1U);
}

}  // namespace
}  // namespace zyngrad

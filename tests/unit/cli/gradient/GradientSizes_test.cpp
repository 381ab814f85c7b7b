#include "cli/gradient/GradientSizes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

/// 3 x 3 x 3 cubes; the one in the middle is the only interior cell.
class GradientSizesOfCubes : public testing::Test {
 protected:
  GradientSizesOfCubes()
      : partition_(BoxPartition("box:3,3,3")), boundary_(BoundaryCells(*partition_->mesh())) {
    auto const n = static_cast<std::size_t>(partition_->mesh()->NCell) + 1;
    for (auto* component : {&gradient_.x, &gradient_.y, &gradient_.z}) component->assign(n, 0.0);
    while (boundary_[middle_] != 0) ++middle_;
  }

  GradientSizes Sizes() { return MeasureGradient(TestRanks(), *partition_, gradient_, boundary_); }

  std::unique_ptr<reference_host::HostPartition> partition_;
  std::vector<char> boundary_;
  GradientArrays gradient_;
  std::size_t middle_ = 1;
};

TEST_F(GradientSizesOfCubes, AreNormsOfTheLengthAndRangesOfTheComponents) {
  gradient_.x[middle_] = 3.0;
  gradient_.z[middle_] = -4.0;
  GradientSizes const sizes = Sizes();
  EXPECT_EQ(1, sizes.norms.interior.nCells);
  EXPECT_EQ(5.0, sizes.norms.interior.l1);
  EXPECT_EQ(5.0, sizes.norms.interior.max);
  EXPECT_EQ(14, sizes.norms.interior.maxCell);
  EXPECT_EQ(26, sizes.norms.boundary.nCells);
  EXPECT_EQ(0.0, sizes.norms.boundary.l2);
  EXPECT_EQ((std::array<double, 3>{0.0, 0.0, -4.0}), sizes.lowest);
  EXPECT_EQ((std::array<double, 3>{3.0, 0.0, 0.0}), sizes.highest);
}

TEST_F(GradientSizesOfCubes, LeaveGhostAndHaloCellsOut) {
  gradient_.x.back() = 100.0;  // a ghost cell
  EXPECT_EQ(0.0, Sizes().highest[0]);
}

TEST_F(GradientSizesOfCubes, CountValuesThatAreNotFiniteAndRangeOverTheOthers) {
  gradient_.y[middle_] = std::nan("");
  EXPECT_EQ(1, Sizes().norms.interior.nNotFinite);
  EXPECT_EQ(0.0, Sizes().highest[1]);
  gradient_.z.assign(gradient_.z.size(), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(Sizes().lowest[2]));
  EXPECT_TRUE(std::isnan(Sizes().highest[2]));
}

}  // namespace
}  // namespace zyngrad

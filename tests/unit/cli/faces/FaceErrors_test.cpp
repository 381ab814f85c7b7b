#include "cli/faces/FaceErrors.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cli/base/UsageError.h"
#include "cli/faces/TargetedFaces.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/NotFinite.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

TEST(FaceKindNames, AreThoseOfTheOperatorsNumbers) {
  char const* const names[] = {"inner", "wall", "inlet", "outlet", "partition", "symmetry"};
  for (int k = 0; k < 6; ++k) {
    auto const group = FaceKindFromName(names[k]);
    ASSERT_TRUE(group.has_value()) << names[k];
    EXPECT_EQ(static_cast<int>(*group), k + 1);
    EXPECT_EQ(NameOf(*group), names[k]);
    EXPECT_EQ(IsBoundary(*group), k != 0 && k != 4);
  }
  for (char const* name : {"", "Wall", "door", "inner "}) EXPECT_FALSE(FaceKindFromName(name)) << name;
  EXPECT_EQ("inner, wall, inlet, outlet, partition or symmetry", FaceKindNames());
}

TEST(TargetedFaces, KnowsAreaAndPlaceOfEachFace) {
  auto const partition = BoxPartition("box:2,3,4");
  TargetedFaces const inner = TargetedFacesOf(*partition, FaceKind::Inner);
  EXPECT_EQ(inner.count, 1 * 12 + 2 * 8 + 3 * 6);
  TargetedFaces const inlet = TargetedFacesOf(*partition, FaceKind::Inlet);
  EXPECT_EQ(12, inlet.count);
  for (int f = 1; f <= inlet.count; ++f) {
    EXPECT_NEAR(inlet.Area(f), 1.0 / 16.0, 1e-15);  // cells are cubes, the longest side is 1
    EXPECT_EQ(0.0, inlet.Target(f)[0]);
    EXPECT_EQ(4, inlet.nodes[f][0]);
  }
  EXPECT_EQ(12, TargetedFacesOf(*partition, FaceKind::Outlet).count);
  EXPECT_EQ(TargetedFacesOf(*partition, FaceKind::Wall).count, 2 * (2 * 4 + 2 * 3));
  EXPECT_EQ(0, TargetedFacesOf(*partition, FaceKind::Symmetry).count);
  EXPECT_EQ(0, TargetedFacesOf(*partition, FaceKind::Partition).count);
}

TEST(TargetedFaces, PutsPartitionFacesAtTheirHaloCells) {
  reference_host::FaceMesh const mesh = BoxWithGroups("box:2,1,1");
  reference_host::HostPartition partition(SplitMesh(mesh, {0, 1}, 2).front());
  TargetedFaces const cut = TargetedFacesOf(partition, FaceKind::Partition);
  ASSERT_EQ(1, cut.count);
  CZYN3DFiniteVolumeMesh& lent = *partition.mesh();
  lent.xc[cut.other[1]] = 0.75;  // as the exchange would set it
  EXPECT_EQ(0.75, cut.Target(1)[0]);
}

/// Two cells side by side, cubes with edges of 1/2: one inner face, ten boundary faces.
class ErrorsOnFaces : public testing::Test {
 protected:
  ErrorsOnFaces()
      : partition_(BoxPartition("box:2,1,1")), walls_(TargetedFacesOf(*partition_, FaceKind::Wall)) {}

  std::vector<double> OnWalls(double value) const {
    return std::vector<double>(static_cast<std::size_t>(walls_.count) + 1, value);
  }

  std::unique_ptr<reference_host::HostPartition> partition_;
  TargetedFaces walls_;
};

TEST_F(ErrorsOnFaces, AreWeightedByArea) {
  ASSERT_EQ(8, walls_.count);
  std::vector<double> value = OnWalls(2.0);
  value[3] += 3.0;
  value[5] -= 4.0;
  FaceErrors const errors = SummariseFaceErrors(TestRanks(), *partition_, walls_, value, OnWalls(2.0));
  EXPECT_EQ(8, errors.nFaces);
  EXPECT_NEAR(2.0, errors.area, 1e-15);
  EXPECT_NEAR(errors.l1, 7.0 / 8.0, 1e-15);
  EXPECT_NEAR(errors.l2, std::sqrt(25.0 / 8.0), 1e-15);
  EXPECT_NEAR(errors.relativeL2, errors.l2 / 2.0, 1e-15);
  EXPECT_EQ(4.0, errors.max);
  EXPECT_EQ(5, errors.maxPlace.face);
  EXPECT_EQ(0, errors.maxPlace.other);
  EXPECT_EQ(errors.maxPlace.at[0], walls_.Target(5)[0]);
  EXPECT_EQ(0, errors.nNotFinite);
}

TEST_F(ErrorsOnFaces, TakeTheLowerCellOfEqualOnes) {
  std::vector<double> value = OnWalls(1.0);
  FaceErrors const errors = SummariseFaceErrors(TestRanks(), *partition_, walls_, value, OnWalls(0.0));
  EXPECT_EQ(1, errors.maxPlace.cell);
  int first = 1;
  while (partition_->globalCell()[static_cast<std::size_t>(walls_.cv[first])] != 1) ++first;
  EXPECT_EQ(errors.maxPlace.face, first);
  EXPECT_TRUE(std::isnan(errors.relativeL2));
}

TEST_F(ErrorsOnFaces, CountWhatIsNotFinite) {
  std::vector<double> value = OnWalls(1.0);
  value[2] = kNaN;
  value[4] = 1.5;
  FaceErrors const errors = SummariseFaceErrors(TestRanks(), *partition_, walls_, value, OnWalls(1.0));
  EXPECT_EQ(1, errors.nNotFinite);
  EXPECT_TRUE(std::isnan(errors.l1));
  EXPECT_EQ(0.5, errors.max);
  EXPECT_EQ(4, errors.maxPlace.face);
}

TEST_F(ErrorsOnFaces, AreNotNumbersWithoutFaces) {
  TargetedFaces const none = TargetedFacesOf(*partition_, FaceKind::Symmetry);
  FaceErrors const errors = SummariseFaceErrors(TestRanks(), *partition_, none, {0.0}, {0.0});
  EXPECT_EQ(0, errors.nFaces);
  EXPECT_TRUE(std::isnan(errors.l2));
  EXPECT_TRUE(std::isnan(errors.max));
  EXPECT_EQ(0, errors.maxPlace.face);
}

TEST_F(ErrorsOnFaces, CheckTheSumsOfTheWeights) {
  std::vector<double> sums = OnWalls(1.0);
  EXPECT_EQ(0, CheckFaceRows(TestRanks(), *partition_, walls_, sums).nOff);
  sums[1] = 1.0009;  // within the tolerance
  sums[2] = 0.998;
  sums[6] = 1.004;
  sums[7] = kNaN;
  FaceRowCheck const check = CheckFaceRows(TestRanks(), *partition_, walls_, sums);
  EXPECT_EQ(2, check.nOff);
  EXPECT_EQ(1.004, check.worstSum);
  EXPECT_EQ(6, check.worst.face);
  EXPECT_EQ(1, check.nNotFinite);
  EXPECT_EQ(7, check.firstNotFinite.face);
}

}  // namespace
}  // namespace zyngrad

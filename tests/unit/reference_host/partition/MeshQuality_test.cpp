#include "reference_host/partition/MeshQuality.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace reference_host {
namespace {

using namespace test_meshes;

QualitySums QualityOf(FaceMesh const& mesh, int nParts = 1) {
  InProcessGroup group(nParts);
  std::vector<MeshPart> const parts = SplitMesh(mesh, RandomParts(mesh.nCells, nParts), nParts);
  std::vector<QualitySums> sums(nParts);
  RunInProcess(group, [&](int p) {
    HostPartition partition(parts[p]);
    InProcessCommunication communication(group, partition);
    partition.CompleteHalo(communication);
    sums[p] = MeasureQuality(partition);
  });
  for (int p = 1; p < nParts; ++p) AddQuality(sums[0], sums[p]);
  return sums[0];
}

TEST(MeshQuality, BoxesAreOrthogonalAndNotSkewed) {
  QualitySums const sums = QualityOf(HexBox(3, 2, 4));
  EXPECT_EQ(sums.nFaces, 2 * 2 * 4 + 3 * 1 * 4 + 3 * 2 * 3);
  EXPECT_LT(sums.maxNonOrthogonality, 1e-13);  // degrees: a rounding in a direction of length 1
  EXPECT_LT(sums.maxSkewness, 1e-15);
}

TEST(MeshQuality, ShearedBoxesLeanByTheAngleOfTheShear) {
  // Two boxes one above the other in x, sheared by y += x/2: the faces x = const keep their normals, the line
  // of centres leans by atan(1/2) and passes through the middle of the face.
  FaceMesh mesh = HexBox(2, 1, 1);
  for (Point& point : mesh.points) point[1] += 0.5 * point[0];
  QualitySums const sums = QualityOf(mesh);
  EXPECT_EQ(1, sums.nFaces);
  EXPECT_NEAR(sums.sumNonOrthogonality, std::atan(0.5) * 180 / std::acos(-1.0), 1e-12);
  EXPECT_NEAR(sums.maxNonOrthogonality, sums.sumNonOrthogonality, 0);
  EXPECT_NEAR(0, sums.maxSkewness, 1e-15);
}

TEST(MeshQuality, StepBetweenCoarseAndFineCellsIsSkewed) {
  // A coarse cell 1/2 x 1 x 1 with its centre at (1/4, 1/2, 1/2), fine ones 1/4 x 1/2 x 1/2 beside it, the
  // first at (5/8, 1/4, 1/4): d = (3/8, -1/4, -1/4), |d| = sqrt(17)/8. The angle to x has the tangent
  // (sqrt(2)/4) / (3/8). The line passes x = 1/2 at 2/3 of d, at (1/2, 1/3, 1/3); the face centre is (1/2,
  // 1/4, 1/4), sqrt(2)/12 away.
  QualitySums const sums = QualityOf(PolyBox(1));
  EXPECT_EQ(sums.nFaces,
            4 + 4 + 4 + 4);  // the step, between the fine layers, and within each of the two layers
  EXPECT_NEAR(sums.maxNonOrthogonality, std::atan(std::sqrt(2.0) * 2 / 3) * 180 / std::acos(-1.0), 1e-12);
  EXPECT_NEAR(sums.sumNonOrthogonality, 4 * sums.maxNonOrthogonality, 1e-12);
  EXPECT_NEAR(sums.maxSkewness, std::sqrt(2.0) / 12 / (std::sqrt(17.0) / 8), 1e-15);
  EXPECT_NEAR(sums.sumSkewness, 4 * sums.maxSkewness, 1e-14);
}

TEST(MeshQuality, FacesBetweenPartitionsAreCountedOnce) {
  FaceMesh const mesh = Perturbed(MixedBox(4), 0.03);
  QualitySums const whole = QualityOf(mesh);
  for (int nParts = 2; nParts <= 5; ++nParts) {
    QualitySums const sums = QualityOf(mesh, nParts);
    EXPECT_EQ(sums.nFaces, whole.nFaces);
    // Other order of the sums; angles and distances seen from the other side.
    EXPECT_NEAR(sums.sumNonOrthogonality, whole.sumNonOrthogonality, 1e-12 * whole.sumNonOrthogonality);
    EXPECT_NEAR(sums.sumSkewness, whole.sumSkewness, 1e-12 * whole.sumSkewness);
    EXPECT_NEAR(sums.maxNonOrthogonality, whole.maxNonOrthogonality, 1e-12 * whole.maxNonOrthogonality);
    EXPECT_NEAR(sums.maxSkewness, whole.maxSkewness, 1e-12 * whole.maxSkewness);
  }
}

TEST(MeshQuality, PartitionWithoutSuchFacesCountsNone) {
  HostPartition partition(ExtractPart(HexBox(1, 1, 1), {0}, 0, 1));
  QualitySums const sums = MeasureQuality(partition);
  EXPECT_EQ(0, sums.nFaces);
  EXPECT_EQ(0.0, sums.maxSkewness);
}

TEST(MeshQuality, RecordsOfAnyHostCountPartitionFacesOnBothSides) {
  // A row of three boxes, a part each: the middle one has both faces, its neighbours have one each.
  FaceMesh const mesh = HexBox(3, 1, 1);
  std::vector<MeshPart> const parts = SplitMesh(mesh, {0, 1, 2}, 3);
  InProcessGroup group(3);
  std::vector<QualitySums> sums(3);
  RunInProcess(group, [&](int p) {
    HostPartition partition(parts[p]);
    InProcessCommunication communication(group, partition);
    partition.CompleteHalo(communication);
    sums[p] = MeasureQuality(*partition.mesh(), *partition.partitionFaces());
  });
  EXPECT_EQ(1, sums[0].nFaces);
  EXPECT_EQ(2, sums[1].nFaces);
  EXPECT_EQ(1, sums[2].nFaces);
  EXPECT_LT(sums[1].maxSkewness, 1e-15);
}

}  // namespace
}  // namespace reference_host

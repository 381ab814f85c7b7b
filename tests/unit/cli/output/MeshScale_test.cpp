#include "cli/output/MeshScale.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "cli/base/TextTable.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;
using reference_host::Point;

/// A box of cubes, moved and scaled.
std::unique_ptr<HostPartition> BoxAt(Point const& corner, Point const& scale) {
  reference_host::FaceMesh mesh = BoxWithGroups("box:4,4,4");
  for (Point& point : mesh.points)
    for (std::size_t d = 0; d < 3; ++d) point[d] = corner[d] + scale[d] * point[d];
  std::vector<int> const partOfCell(static_cast<std::size_t>(mesh.nCells), 0);
  return std::make_unique<HostPartition>(SplitMesh(mesh, partOfCell, 1).front());
}

std::string PlaceOfCell(HostPartition& partition, int c, int digits) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  return Place(mesh.xc[c], mesh.yc[c], mesh.zc[c], digits);
}

void ExpectNeighboursApart(HostPartition& partition) {
  int const digits = PlaceDigits(TestRanks(), partition);
  EXPECT_EQ(digits, PlaceDigits(partition));
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  for (int f = 1; f <= mesh.NInnerFaces; ++f)
    EXPECT_NE(PlaceOfCell(partition, mesh.ijCV[f], digits), PlaceOfCell(partition, mesh.ij[f], digits));
}

TEST(PlaceDigits, TellNeighboursApartFarFromTheOrigin) {
  auto const partition = BoxAt({6.4e6, 4.8e6, 1.2e6}, {4.0, 4.0, 4.0});
  ExpectNeighboursApart(*partition);
  EXPECT_LE(PlaceDigits(*partition), 9);
}

TEST(PlaceDigits, TellFlatCellsApart) { ExpectNeighboursApart(*BoxAt({0.0, 0.0, 1.0}, {1.0, 1.0, 1e-7})); }

TEST(PlaceDigits, AreSixInOrdinaryMeshes) {
  EXPECT_EQ(kPlaceDigits, PlaceDigits(*BoxAt({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0})));
  EXPECT_EQ(kPlaceDigits, PlaceDigits(*BoxAt({-20.0, 0.0, 0.0}, {1.0, 1.0, 1.0})));
  EXPECT_EQ(kPlaceDigits, PlaceDigits(*BoxPartition("box:1,1,1")));  // no neighbours
}

TEST(PlaceDigits, NeverExceedThoseOfANumber) { EXPECT_EQ(17, PlaceDigits(1e300, 1e-300)); }

}  // namespace
}  // namespace zyngrad

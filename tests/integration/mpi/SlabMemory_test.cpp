#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "MpiTestSupport.h"
#include "PeakBytes.h"
#include "reference_host/box/BoxSpec.h"
#include "reference_host/slabs/BoxSlab.h"
#include "reference_host/slabs/SlabCheck.h"
#include "reference_host/slabs/SlabDistribution.h"

namespace reference_host::test {
namespace {

/// Parts across x, while the blocks of the slabs go along z, so that most cells travel.
std::vector<int> SlicesAcrossX(MeshSlab const& slab, int nx, std::int64_t nCellsOfCube,
                               MpiCommunicator const& world) {
  std::vector<int> part;
  for (std::int64_t c = slab.cells.First(world.rank()); c < slab.cells.End(world.rank()); ++c) {
    part.push_back(static_cast<int>(c / nCellsOfCube % nx * world.size() / nx));
  }
  return part;
}

/// The most bytes at once per cell of the rank's share, from the making of the slab to the part.
double BytesOfACell(std::string const& box, int nx, std::int64_t nCellsOfCube) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  ForgetPeak();
  std::size_t const before = LiveBytes();
  MeshSlab slab = MakeBoxSlab(world, ParseBoxSpec(box));
  double const nCells = static_cast<double>(slab.cells.nItems());
  CheckSlabTables(world, slab, box);
  std::vector<int> const parts = SlicesAcrossX(slab, nx, nCellsOfCube, world);
  MeshPart const part = DistributeSlab(world, std::move(slab), parts, box);
  EXPECT_GT(part.nOwned, 0);
  return static_cast<double>(PeakBytes() - before) * world.size() / nCells;
}

}  // namespace

// A rank that held the whole mesh would need several times as much already on two ranks.
TEST(SlabMemory, IsBoundedByTheShareOfTheRank) {
  if (RankCount() > 4) GTEST_SKIP() << "the slices are so thin that halo cells outweigh them";
  EXPECT_LT(BytesOfACell("box:40,40,40:tet", 40, 6), 300.0);
  EXPECT_LT(BytesOfACell("box:64,64,64", 64, 1), 500.0);
}

}  // namespace reference_host::test

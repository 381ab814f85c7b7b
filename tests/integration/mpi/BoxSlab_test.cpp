#include "reference_host/slabs/BoxSlab.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/parallel/MeshPartBytes.h"
#include "reference_host/slabs/SlabDistribution.h"

namespace reference_host {
namespace {

using test::Rank;
using test::RankCount;

}  // namespace

TEST(BoxSlab, DistributedAmongTheBlocksOfTheBoxItIsThePartMadeInPlace) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  for (std::string const text : {"box:4,3,5", "box:4,3,5:tet:perturb=0.1", "box:3,4,5:prism:skew=0.1",
                                 "box:4,3,5:dual:perturb=0.2", "box:16,1,1:dual:stretch=2"}) {
    SCOPED_TRACE(text);
    BoxSpec const spec = ParseBoxSpec(text);
    MeshSlab slab = MakeBoxSlab(communicator, spec);
    std::vector<int> const all = BoxPartOfCell(spec, RankCount());
    std::vector<int> const own(all.begin() + slab.cells.First(Rank()), all.begin() + slab.cells.End(Rank()));
    MeshPart const part = DistributeSlab(communicator, std::move(slab), own, text);
    EXPECT_EQ(PackMeshPart(MakeBoxPart(spec, Rank(), RankCount())), PackMeshPart(part));
  }
}

}  // namespace reference_host

#include "SlabSupport.h"

#include <gtest/gtest.h>

#include <string>

#include "reference_host/box/BoxMesh.h"

namespace reference_host::test {

TEST(SlabOf, SharesAMeshThatGatherPutsTogether) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (std::string const text :
       {"box:5,4,3", "box:3,3,2:tet:perturb=0.1", "box:4,4,4:dual", "box:4,3,3:periodic=xz"}) {
    FaceMesh const whole = MakeBox(ParseBoxSpec(text));
    ExpectEqual(Gather(SlabOf(whole, world), world), whole);
    for (unsigned const seed : {1u, 2u, 3u}) {
      MeshSlab const slab = SlabOf(whole, world, UnevenBlocks(whole, world, seed));
      ExpectEqual(Gather(slab, world), whole);
    }
  }
}

}  // namespace reference_host::test

#include "SlabSupport.h"

#include <gtest/gtest.h>

#include <string>

#include "reference_host/MeshReader.h"
#include "reference_host/box/BoxMesh.h"

namespace reference_host::test {
namespace {

/// Expects that a mesh in blocks of all kinds, gathered again, is the whole mesh.
void ExpectShared(FaceMesh const& whole) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  ExpectEqual(Gather(SlabOf(whole, world), world), whole);
  for (unsigned const seed : {1u, 2u, 3u}) {
    ExpectEqual(Gather(SlabOf(whole, world, UnevenBlocks(whole, world, seed)), world), whole);
  }
}

}  // namespace

TEST(SlabOf, SharesAMeshThatGatherPutsTogether) {
  for (std::string const text : {"box:5,4,3", "box:3,3,2:tet:perturb=0.1", "box:4,4,4:dual"}) {
    ExpectShared(MakeBox(ParseBoxSpec(text)));
  }
}

TEST(SlabOf, SharesPeriods) {
  FaceMesh const channel = ReadMesh(ZYN_TEST_DATA "/openfoam_cases/channel");
  ASSERT_FALSE(channel.periods.empty());
  ExpectShared(channel);
}

}  // namespace reference_host::test

#pragma once

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host::test {

/// The blocks of a mesh that are on each rank.
struct SlabBlocks {
  BlockRanges nodes, cells, faces;
};

/// Blocks that differ by one item at most.
SlabBlocks EvenBlocks(FaceMesh const& whole, MpiCommunicator const& communicator);

/// Blocks of random sizes, some of them empty. The same seed gives the same blocks on every rank.
SlabBlocks UnevenBlocks(FaceMesh const& whole, MpiCommunicator const& communicator, unsigned seed);

/// The rank's share of a mesh that every rank has whole. Not collective. Pairs of periodic faces have
/// their places.
MeshSlab SlabOf(FaceMesh const& whole, MpiCommunicator const& communicator);
MeshSlab SlabOf(FaceMesh const& whole, MpiCommunicator const& communicator, SlabBlocks const& blocks);

/// Collective. The whole mesh on every rank: without names.
FaceMesh Gather(MeshSlab const& slab, MpiCommunicator const& communicator);

/// Expects that every number and every bit of the points is the same; names are not compared.
void ExpectEqual(FaceMesh const& mesh, FaceMesh const& expected);

}  // namespace reference_host::test

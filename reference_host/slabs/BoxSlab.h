#pragma once

#include "reference_host/box/BoxSpec.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// One rank's share of a box, made without the rest and without communication. The shares of all ranks together are
/// MakeBox(spec). The blocks of cells have whole cubes, those of a dual whole cells.
/// @throws MeshError  the numbers of the box are outside their ranges
MeshSlab MakeBoxSlab(BoxSpec const& spec, int rank, int nRanks);

inline MeshSlab MakeBoxSlab(MpiCommunicator const& communicator, BoxSpec const& spec) {
  return MakeBoxSlab(spec, communicator.rank(), communicator.size());
}

}  // namespace reference_host

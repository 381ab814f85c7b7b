#pragma once

#include <string>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Collective. JoinPeriods for a mesh in slabs: drops the periods that have no faces or are not wanted, and finds the
/// shifts and turns of the others. Call it after AssignBoundaryGroups, before PartitionSlab.
/// @pre  the slab has passed CheckSlabTables
/// @throws MeshError  as JoinPeriods, with the same text on every rank
void JoinSlabPeriods(MpiCommunicator const& communicator, MeshSlab& slab, std::string const& meshName);

}  // namespace reference_host

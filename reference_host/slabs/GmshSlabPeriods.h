#pragma once

#include <vector>

#include "reference_host/gmsh/GmshContent.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Collective. AddGmshPeriods for a mesh in slabs. The boundary faces go through rank 0, which pairs them.
/// @param[in] surfaces  on rank 0, ignored on others; instead of node tags the numbers of the nodes in the mesh, -1: no
///                      cell uses the node
void AddGmshSlabPeriods(MpiCommunicator const& communicator, std::vector<GmshPeriodicSurface> const& surfaces,
                        MeshSlab& mesh);

}  // namespace reference_host

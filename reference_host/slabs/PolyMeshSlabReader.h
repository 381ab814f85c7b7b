#pragma once

#include <string>

#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Collective. What ReadPolyMesh reads, each rank its share, with the same messages. Blocks of nodes, cells and faces
/// are even (BlockRanges::Even).
///
/// Binary files are read by every rank, its own bytes of them. Rank 0 reads text and compressed files in pieces and
/// sends each rank its share.
/// @param[in] folder  the polyMesh folder itself
/// @throws MeshError  with the same text on every rank
MeshSlab ReadPolyMeshSlab(MpiCommunicator const& communicator, std::string const& folder);

/// Collective. What BoundaryOf tells of the whole mesh, on rank 0; the owners are empty on the others.
/// @pre  a mesh of ReadPolyMeshSlab, before its periods are joined
PolyMeshBoundary GatherBoundary(MpiCommunicator const& communicator, MeshSlab const& slab);

}  // namespace reference_host

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/MeshPart.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"
#include "reference_host/slabs/SlabNaming.h"

namespace reference_host {

/// Collective. The first half of CheckMesh, up to cells with fewer than 4 faces: rejects a mesh whose tables the
/// operators cannot use, with the text that CheckMesh gives for the whole, which names its first bad node, face or cell.
/// @throws MeshError  with the same text on every rank
void CheckSlabTables(MpiCommunicator const& communicator, MeshSlab const& slab, std::string const& meshName);

/// Collective. The second half of CheckMesh, faces without area, cells that are not closed and cells without a positive
/// volume, on the parts that the ranks have of the mesh.
/// @param[in] numberOfFace  by face of the part: its number in the whole mesh
/// @throws MeshError  with the same text on every rank
void CheckPartGeometry(MpiCommunicator const& communicator, MeshPart const& part,
                       std::vector<std::int64_t> const& numberOfFace, SlabNaming const& names,
                       std::string const& meshName);

}  // namespace reference_host
